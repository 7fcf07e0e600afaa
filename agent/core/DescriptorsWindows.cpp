// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/Descriptors.h"

// Windows limits handles by memory alone.
namespace agent::descriptors {

void openStandardStreams() {} // a handle never gets the number of another one's stream

bool require(int)
{
    return true;
}

bool isReserved(int)
{
    return false;
}

} // namespace agent::descriptors
