// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TYPES_RESULTENTRY_H
#define VIGIL_TYPES_RESULTENTRY_H

#include <memory>

#include <vigil/Result.h>

#include "types/PerformanceData.h"

/// What one evaluation of one metric gave: the result, and its numbers unless the metric has none to show
/// (then perfData is null).
struct ResultEntry
{
    vigil::Result result;
    std::unique_ptr<PerformanceData> perfData = std::make_unique<PerformanceData>();
};

#endif
