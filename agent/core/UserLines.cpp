// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/UserLines.h"

#include <utility>

#include "agent/core/Log.h"

namespace agent {

namespace {

constexpr qint64 secondMs = 1000;

} // namespace

UserLines::UserLines(Clock& clock) : m_second(clock, [this] { endSecond(); })
{
    log::setGate([this](const User& user) { return mayWrite(user); });
}

UserLines::~UserLines()
{
    log::setGate(nullptr);
}

bool UserLines::mayWrite(const User& user)
{
    if (!m_second.isActive())
        m_second.startOnce(secondMs);
    Count& count = m_counts[user];
    const bool isWithin = count.written < maxPerSecond;
    ++(isWithin ? count.written : count.leftOut);
    return isWithin;
}

void UserLines::endSecond()
{
    for (const auto& [user, count] : std::exchange(m_counts, {})) {
        if (count.leftOut > 0)
            log::warning(QStringLiteral("%1 more lines about applications of %2 are left out of this second")
                             .arg(QString::number(count.leftOut), userText(user)));
    }
}

} // namespace agent
