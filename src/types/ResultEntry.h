// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TYPES_RESULTENTRY_H
#define VIGIL_TYPES_RESULTENTRY_H

#include <memory>

#include <vigil/Result.h>

#include "types/PerformanceData.h"

/// The outcome of one evaluation of one metric. perfData is null for a metric without performance data.
struct ResultEntry
{
    vigil::Result result;
    std::unique_ptr<PerformanceData> perfData = std::make_unique<PerformanceData>();
};

#endif
