// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_LIMITS_H
#define VIGIL_AGENT_APPLICATIONS_LIMITS_H

#include <QtGlobal>

#include "base/wire/FrameHeader.h"

namespace agent {

/// How much of the agent applications may take up. What is beyond is refused, so that one application that
/// goes wrong does no harm to the others.
///
/// Threads: plain values. Failure: none.
struct Limits
{
    int connections = 256;     ///< at one time
    int cells = 100'000;       ///< of one connection
    int textBytes = 65'535;    ///< of one value; SNMP carries no more
    int frameBytes = maxFrame; ///< of one frame behind its length field

    static constexpr int maxFrame = static_cast<int>(base::FrameHeader::maxLength);

    /// The time that a frame may take from its first byte to its last one. Half a frame takes up memory.
    static constexpr qint64 frameMs = 60'000;
};

} // namespace agent

#endif
