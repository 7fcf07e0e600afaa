// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_MANAGEMENTCALLBACKADAPTER_H
#define VIGIL_SNMP_MANAGEMENTCALLBACKADAPTER_H

#include <vigil/ValueChangedCallback.h>

class ManagementHandler;
class SnmpMgmFuncTable;

/// Turns the manager's SETs of a management row into calls of the application's handler.
///
/// Every SET is accepted, and the cell returns to its idle value at once, whatever was set: 1 for the
/// triggers, the empty text for the command. Only 2, and the empty text, do anything; without a handler
/// nothing does.
///
/// Threads: called on the client thread. Ownership: owned by the management row, owns neither handler nor
/// table.
class ManagementCallbackAdapter : public vigil::ValueChangedCallback
{
public:
    ManagementCallbackAdapter(ManagementHandler* handler, SnmpMgmFuncTable* table);

    void callbackValueChanged(const vigil::Oid& cell, std::string text) override;
    void callbackValueChanged(const vigil::Oid& cell, int value) override;

private:
    void trigger(unsigned int columnIndex);

    ManagementHandler* m_handler;
    SnmpMgmFuncTable* m_table;
};

#endif
