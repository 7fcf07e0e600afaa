// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TYPES_WORSTSTATUS_H
#define VIGIL_TYPES_WORSTSTATUS_H

#include <vector>

#include <vigil/Result.h>

#include "types/ResultEntry.h"

/// The most severe status of the list, in the order OK < UNKNOWN < WARNING < CRITICAL: a metric that could
/// not be judged must not hide one that is known to be bad. UNKNOWN for an empty list.
vigil::HealthStatus worstStatus(const std::vector<ResultEntry>& entries);

#endif
