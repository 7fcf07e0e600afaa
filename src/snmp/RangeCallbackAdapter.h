// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_RANGECALLBACKADAPTER_H
#define VIGIL_SNMP_RANGECALLBACKADAPTER_H

#include <vigil/ValueChangedCallback.h>

class RemoteMetricObserver;
class SnmpMetricTable;

/// Turns a manager's SETs of range cells into new ranges of the metric, with the application's consent.
///
/// Only the validation asks for consent; a committed range is applied. Integer SETs are accepted and change
/// nothing.
///
/// Threads: called on the client thread. Ownership: the metric's row owns it; it owns neither observer nor
/// table.
class RangeCallbackAdapter : public vigil::ValueChangedCallback
{
public:
    RangeCallbackAdapter(RemoteMetricObserver* observer, SnmpMetricTable* table);

    using ValueChangedCallback::callbackValidateValue;
    using ValueChangedCallback::callbackValueChanged;
    unsigned int callbackValidateValue(const vigil::Oid& cell, const std::string& text) override;
    void callbackValueChanged(const vigil::Oid& cell, std::string text) override;

private:
    RemoteMetricObserver* m_observer;
    SnmpMetricTable* m_table;
};

#endif
