// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_RANGEGUARD_H
#define VIGIL_HOST_HEALTH_RANGEGUARD_H

#include <vigil/vigil.h>

/// Decides on the ranges that a manager wants to set: one without an upper bound would never tell of a
/// machine that is full, so it is refused. Called on the library's client thread.
class RangeGuard : public vigil::RangeChangeHandler
{
public:
    bool acceptRangeChange(vigil::ScalarMetric* metric, vigil::RangeKind kind,
                           const vigil::Range& range) override;

    /// Publishes the range anew, so that the manager finds the new text after a reconnection, too.
    void rangeChanged(vigil::ScalarMetric* metric, vigil::RangeKind kind) override;
};

#endif
