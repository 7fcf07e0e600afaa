// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_APPLICATIONINFO_H
#define VIGIL_AGENT_APPLICATIONS_APPLICATIONINFO_H

#include <QDateTime>
#include <QHostAddress>

#include "agent/applications/Identity.h"
#include "agent/cells/Cell.h"

namespace agent {

/// The agent's report about an application, connected or lost.
struct ApplicationInfo
{
    enum class State { Connected, Lost };

    ApplicationId number = 0;
    QHostAddress address;
    quint16 port = 0;
    Identity identity;
    State state = State::Connected;
    QDateTime since; ///< UTC; start of this state
    size_t cells = 0;
    quint64 frames = 0;         ///< received
    quint64 recordsRefused = 0; ///< received but not served
    QDateTime lastFrame;        ///< UTC; null before the first frame
};

/// The application's name in messages.
QString nameOf(const ApplicationInfo& application);

} // namespace agent

#endif
