// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_RANGECALLBACKADAPTER_H
#define VIGIL_SNMP_RANGECALLBACKADAPTER_H

#include <vigil/ValueChangedCallback.h>

class RemoteMetricObserver;
class SnmpMetricTable;

/// Turns the manager's SETs of a metric's range cells into new ranges of the metric, with the application's
/// consent.
///
/// Consent is asked for in the validation only; a committed value is applied. Integer SETs on a metric's row
/// are accepted and change nothing.
///
/// Threads: called on the client thread. Ownership: owned by the metric's row, owns neither observer nor
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
