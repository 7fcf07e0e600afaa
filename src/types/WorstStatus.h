// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TYPES_WORSTSTATUS_H
#define VIGIL_TYPES_WORSTSTATUS_H

#include <vector>

#include <vigil/Result.h>

#include "types/ResultEntry.h"

/// The most severe status of the list, UNKNOWN if it is empty. The order is OK < UNKNOWN < WARNING <
/// CRITICAL: a metric without a result must not hide a known problem.
vigil::HealthStatus worstStatus(const std::vector<ResultEntry>& entries);

#endif
