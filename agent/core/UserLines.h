// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_USERLINES_H
#define VIGIL_AGENT_CORE_USERLINES_H

#include <map>

#include "agent/core/Timer.h"
#include "agent/core/User.h"

namespace agent {

/// Keeps one user's applications from filling the log: limits the lines about them, and counts the rest.
///
/// It is the gate of the log while it lives.
/// Ownership: the clock must outlive it.
class UserLines
{
public:
    static constexpr int maxPerSecond = 100; ///< for each user

    explicit UserLines(Clock& clock);
    ~UserLines();
    UserLines(const UserLines&) = delete;
    UserLines& operator=(const UserLines&) = delete;

private:
    struct Count
    {
        int written = 0;
        int leftOut = 0;
    };

    bool mayWrite(const User& user);
    void endSecond();

    std::map<User, Count> m_counts; // of the current second
    Timer m_second;
};

} // namespace agent

#endif
