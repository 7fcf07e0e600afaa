// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_MUTE_H
#define VIGIL_AGENT_CORE_MUTE_H

#include <QDateTime>

namespace agent {

/// An operator's mute of a check.
struct Mute
{
    QDateTime until;  ///< UTC
    qint64 forMs = 0; ///< as wanted, or the rest of it when the agent started
};

} // namespace agent

#endif
