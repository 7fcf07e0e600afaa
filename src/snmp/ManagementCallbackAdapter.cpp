// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/ManagementCallbackAdapter.h"

#include <vigil/ManagementHandler.h>
#include <vigil/VigilSnmpInterface.h>

#include "snmp/SnmpMgmFuncTable.h"

using vigil::Oid;
using vigil::VigilSnmpInterface;

namespace {
constexpr int idle = 1;
constexpr int execute = 2;
} // namespace

ManagementCallbackAdapter::ManagementCallbackAdapter(ManagementHandler* handler, SnmpMgmFuncTable* table)
    : m_handler(handler), m_table(table)
{}

void ManagementCallbackAdapter::callbackValueChanged(const Oid& cell, int value)
{
    const auto reset = [&cell] { VigilSnmpInterface::instance().sendValue(cell, idle, 0); };
    try {
        if (m_handler && value == execute)
            trigger(m_table->columnIndexOrNone(cell));
    } catch (...) {
        reset();
        throw; // the callback store reports it
    }
    reset();
}

void ManagementCallbackAdapter::callbackValueChanged(const Oid& cell, std::string text)
{
    const auto reset = [&cell] { VigilSnmpInterface::instance().sendValue(cell, std::string(), 0); };
    try {
        if (m_handler && text.empty() && m_table->columnIndexOrNone(cell) == SnmpMgmFuncTable::commandIndex)
            m_handler->managementFunction5(text);
    } catch (...) {
        reset();
        throw;
    }
    reset();
}

void ManagementCallbackAdapter::trigger(unsigned int columnIndex)
{
    switch (columnIndex) {
    case 0:
        return m_handler->managementFunction1();
    case 1:
        return m_handler->managementFunction2();
    case 2:
        return m_handler->managementFunction3();
    case 3:
        return m_handler->managementFunction4();
    default:
        return;
    }
}
