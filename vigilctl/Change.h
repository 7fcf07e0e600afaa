// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_CHANGE_H
#define VIGILCTL_CHANGE_H

#include <QJsonObject>
#include <QString>

#include "vigilctl/Arguments.h"

namespace vigilctl {

/// A change for the agent to make: mute, unmute or forget.
///
/// Operators give the name or the number of a check or application. The agent takes numbers, so names are
/// looked up in its document first.
class Change
{
public:
    explicit Change(Arguments arguments) : m_arguments(std::move(arguments)) {}

    /// Makes the request for the agent. Returns why it cannot be made, or an empty text.
    QString makeRequest(const QJsonObject& document, QJsonObject& request) const;

    /// The text for the operator once the change is made.
    QString text(const QJsonObject& reply) const;

private:
    const Arguments m_arguments;
};

} // namespace vigilctl

#endif
