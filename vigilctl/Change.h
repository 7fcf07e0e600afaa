// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_CHANGE_H
#define VIGILCTL_CHANGE_H

#include <QJsonObject>
#include <QString>

#include "vigilctl/Arguments.h"

namespace vigilctl {

/// A change that the operator wants: mute, unmute or forget.
///
/// The operator names a check or application as the reports do, or by its number. The agent knows numbers
/// only, so the name is looked up in its document first.
class Change
{
public:
    explicit Change(Arguments arguments) : m_arguments(std::move(arguments)) {}

    /// Makes the request for the agent. Returns why it cannot be made, or an empty text.
    QString makeRequest(const QJsonObject& document, QJsonObject& request) const;

    /// What the operator reads after it is done.
    QString text(const QJsonObject& reply) const;

private:
    const Arguments m_arguments;
};

} // namespace vigilctl

#endif
