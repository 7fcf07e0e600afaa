// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_CONFIGCHECK_H
#define VIGIL_AGENT_PROCESS_CONFIGCHECK_H

#include <QObject>
#include <QProcess>
#include <QString>

#include "agent/core/Clock.h"
#include "agent/core/Timer.h"

namespace agent {

/// Checks a configuration file without touching the running configuration: the agent's program runs once
/// more, with --check-config.
///
/// Failure: a check that cannot be run, or takes half a minute, counts as failed.
class ConfigCheck : public QObject
{
    Q_OBJECT

public:
    /// program: the agent's file.
    ConfigCheck(Clock& clock, QString program);

    /// finished() follows. A check that is still running is followed by another one.
    void start(const QString& configFile);

signals:
    /// Empty if the file is correct.
    void finished(const QString& problem);

private:
    void run();
    void handleEnd(const QString& problem);
    QString problemOf(int exitCode, QProcess::ExitStatus status);

    QString m_configFile;
    const QString m_programFile;
    QProcess m_program;
    Timer m_deadline;
    bool m_isWantedAgain = false;
};

} // namespace agent

#endif
