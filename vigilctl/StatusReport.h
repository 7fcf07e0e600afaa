// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_STATUSREPORT_H
#define VIGILCTL_STATUSREPORT_H

#include <QJsonObject>
#include <QString>

namespace vigilctl {

/// The health of a host as text, made from the agent's document (docs/checks.schema.json).
///
/// Applications choose most texts, so characters with a meaning for terminals are left out.
class StatusReport
{
public:
    /// As of a plugin for Nagios.
    enum ExitCode { Ok = 0, Warning = 1, Critical = 2, Unknown = 3 };

    explicit StatusReport(QJsonObject document) : m_document(std::move(document)) {}

    /// False for a document of something else.
    bool isValid() const;

    /// First a line with the worst status and the counts. Then the checks with a problem or a mute, worst
    /// first.
    QString text(bool isColoured) const;

    ExitCode exitCode() const;

private:
    QString headline() const;

    const QJsonObject m_document;
};

} // namespace vigilctl

#endif
