// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_MANAGEMENTCALLBACKADAPTER_H
#define VIGIL_SNMP_MANAGEMENTCALLBACKADAPTER_H

#include <vigil/ValueChangedCallback.h>

class ManagementHandler;
class SnmpMgmFuncTable;

/// Turns a manager's SETs of a management row into calls of the application's handler.
///
/// Accepts every SET and resets the cell at once, a trigger to 1 and the command to the empty text. Only 2 on
/// a trigger and the empty text on the command call the handler.
///
/// Threads: called on the client thread. Ownership: the management row owns it; it owns neither handler nor
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
