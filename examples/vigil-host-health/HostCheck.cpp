// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "HostCheck.h"

#include <new>

#include "Console.h"

namespace {

CheckHandle createCheck(const std::string& name)
{
    CheckHandle check(vigil::createHealthCheck("host", name));
    if (!check)
        throw std::bad_alloc();
    return check;
}

} // namespace

HostCheck::HostCheck(const std::string& name, const std::string& description,
                     vigil::ManagementHandler& handler)
    : m_check(createCheck(name))
{
    m_check->setDescription(description);
    m_check->registerManagementHandler(&handler);
}

HostCheck::~HostCheck()
{
    m_check->unregisterManagementHandler();
}

void HostCheck::update()
{
    const std::string values = readValues();
    m_check->update();
    const std::string status = vigil::Result().getStatusString(m_check->getStatus());
    say(m_check->getFirstKey() + '/' + m_check->getSecondKey() + ' ' + status + ": " + values);
}
