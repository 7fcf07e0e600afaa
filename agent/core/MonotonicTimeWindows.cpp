// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/MonotonicTime.h"

#include <windows.h>

namespace agent {

/// In steps of the system's timer interrupt, up to 16 ms. Windows' other clocks go on in suspend.
qint64 monotonicMs()
{
    constexpr ULONGLONG unitsPerMs = 10'000;
    ULONGLONG units = 0;
    QueryUnbiasedInterruptTime(&units);
    return static_cast<qint64>(units / unitsPerMs);
}

} // namespace agent
