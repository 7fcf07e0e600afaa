// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_LIMITS_H
#define VIGIL_AGENT_APPLICATIONS_LIMITS_H

#include <QtGlobal>

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>

#include "base/wire/FrameHeader.h"

namespace agent {

/// Limits on users, connections, cells, texts and frames. The agent refuses anything beyond them, so a
/// defective application does not harm the others.
struct Limits
{
    int connections = 256;     ///< at one time; a user other than root has at most seven eighths of them
    int cells = 100'000;       ///< of one application
    int megabytes = 256;       ///< of memory for all applications together
    int userCells = 200'000;   ///< of all connected applications of a user other than root
    int textBytes = 65'535;    ///< of one value; the limit of SNMP
    int frameBytes = maxFrame; ///< of one frame after its length field

    std::set<std::string> users; ///< who may publish; empty: every user, also an unknown one

    std::size_t memory() const { return static_cast<std::size_t>(megabytes) * 1024 * 1024; }

    // The parts of the memory are separate, so many cells never end a connection or drop a notification.

    /// For the cells of all applications, connected or lost.
    std::size_t cellMemory() const { return memory() / 4 * 3; }

    /// For their unfinished frames.
    std::size_t frameMemory() const { return memory() / 8; }

    /// For notifications that wait for their turn.
    std::size_t notificationMemory() const { return memory() / 8; }

    /// Cells of all lost applications together.
    std::size_t lostCells() const { return 10 * static_cast<std::size_t>(cells); }

    /// The longest text behind snmpd. One with a long identifier still fits into a message to snmpd.
    static constexpr int subagentTextBytes = 60'000;

    static constexpr int maxFrame = static_cast<int>(base::FrameHeader::maxLength);

    /// The time from the first byte of a frame to its last: an unfinished frame takes up memory.
    static constexpr qint64 frameMs = 60'000;
};

} // namespace agent

#endif
