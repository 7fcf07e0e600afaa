// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_STATUSREPORT_H
#define VIGILCTL_STATUSREPORT_H

#include <QJsonObject>
#include <QString>

namespace vigilctl {

/// What an operator reads about a host, from the agent's document (docs/checks.schema.json).
///
/// Texts come from applications: characters that a terminal could take as a command are left out.
class StatusReport
{
public:
    /// As of a plugin for Nagios.
    enum ExitCode { Ok = 0, Warning = 1, Critical = 2, Unknown = 3 };

    explicit StatusReport(QJsonObject document) : m_document(std::move(document)) {}

    /// False for a document of something else.
    bool isValid() const;

    /// The first line says it all; then come the checks that are not OK or muted, the worst first.
    QString text(bool isColoured) const;

    ExitCode exitCode() const;

private:
    QString headline() const;

    const QJsonObject m_document;
};

} // namespace vigilctl

#endif
