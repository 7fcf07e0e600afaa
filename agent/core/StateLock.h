// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_STATELOCK_H
#define VIGIL_AGENT_CORE_STATELOCK_H

#include <QString>

#include <cstdint>

#include "agent/core/Error.h"

namespace agent {

/// Keeps a state directory for one agent: two would overwrite each other's files.
///
/// The lock is the system's, on a file in the directory. It ends with the process, even after a crash. The
/// file stays: removing it could let two agents lock two files of this name.
class StateLock
{
public:
    StateLock() = default;
    ~StateLock();
    StateLock(const StateLock&) = delete;
    StateLock& operator=(const StateLock&) = delete;

    /// Waits up to 2 seconds for an agent that is ending. Returns an error if another agent keeps the lock.
    /// Where no lock can be made, it warns and goes on: the agent also serves without a state.
    Error take(const QString& directory);

private:
    enum class Outcome { Taken, Held, Impossible };

    /// Sets reason if it is impossible. One source file for each system.
    Outcome tryToTake(const QString& path, QString& reason);

    std::intptr_t m_file = none;

    static constexpr std::intptr_t none = -1;
};

} // namespace agent

#endif
