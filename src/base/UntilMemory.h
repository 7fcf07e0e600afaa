// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_UNTILMEMORY_H
#define VIGIL_BASE_UNTILMEMORY_H

#include <new>

#include "platform/Platform.h"

namespace base {

/// Runs action, for places where a lack of memory cannot be reported. If memory runs out, repeats it for at
/// most a second. False if it never completed. The action must be fit for a repetition.
template <typename Action>
bool untilMemory(Action action)
{
    constexpr int attempts = 100;
    constexpr unsigned int pauseMs = 10;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        try {
            action();
            return true;
        } catch (const std::bad_alloc&) {
            platform::sleepMs(pauseMs);
        }
    }
    return false;
}

} // namespace base

#endif
