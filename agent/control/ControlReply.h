// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CONTROL_CONTROLREPLY_H
#define VIGIL_AGENT_CONTROL_CONTROLREPLY_H

#include <QByteArray>

#include <functional>
#include <memory>

#include "agent/core/TextPieces.h"
#include "agent/core/User.h"

namespace agent {

/// The reply to one request: a short text, then a long one in pieces, unless null.
struct ControlReply
{
    QByteArray text;
    std::unique_ptr<TextPieces> pieces;
};

/// line is a request of this user, without the line feed.
using ControlHandler = std::function<ControlReply(const QByteArray& line, const User& user)>;

} // namespace agent

#endif
