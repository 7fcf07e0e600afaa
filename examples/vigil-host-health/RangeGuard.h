// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_RANGEGUARD_H
#define VIGIL_HOST_HEALTH_RANGEGUARD_H

#include <vigil/vigil.h>

/// Accepts a manager's range only if it has an upper bound; without one a full machine would raise no alarm.
/// Called on the library's client thread.
class RangeGuard : public vigil::RangeChangeHandler
{
public:
    bool acceptRangeChange(vigil::ScalarMetric* metric, vigil::RangeKind kind,
                           const vigil::Range& range) override;

    /// Publishes the new range, so that managers still read it after a reconnect.
    void rangeChanged(vigil::ScalarMetric* metric, vigil::RangeKind kind) override;
};

#endif
