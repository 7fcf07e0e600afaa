// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/ConfigCheck.h"

#include <utility>

namespace agent {

namespace {

constexpr qint64 deadlineMs = 30'000;

} // namespace

ConfigCheck::ConfigCheck(Clock& clock, QString program)
    : m_programFile(std::move(program)), m_deadline(clock, [this] { m_program.kill(); })
{
    connect(&m_program, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [this](int exitCode, QProcess::ExitStatus status) { handleEnd(problemOf(exitCode, status)); });
    connect(&m_program, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            handleEnd(QStringLiteral("the check of the configuration cannot be run: %1")
                          .arg(m_program.errorString()));
    });
}

void ConfigCheck::start(const QString& configFile)
{
    m_configFile = configFile;
    if (m_program.state() == QProcess::NotRunning)
        run();
    else
        m_isWantedAgain = true;
}

void ConfigCheck::run()
{
    m_deadline.startOnce(deadlineMs);
    m_program.start(m_programFile,
                    {QStringLiteral("--check-config"), QStringLiteral("--config"), m_configFile});
}

/// The last line that the program wrote says what is wrong.
QString ConfigCheck::problemOf(int exitCode, QProcess::ExitStatus status)
{
    if (status != QProcess::NormalExit)
        return QStringLiteral("the check of the configuration has crashed or took too long");
    if (exitCode == 0)
        return {};
    const QString output = QString::fromUtf8(m_program.readAllStandardError()).trimmed();
    if (output.isEmpty())
        return QStringLiteral("the check of the configuration ended with the code %1").arg(exitCode);
    const QString mark = QStringLiteral("error: ");
    const int start = output.lastIndexOf(mark);
    return start < 0 ? output : output.mid(start + mark.size());
}

void ConfigCheck::handleEnd(const QString& problem)
{
    m_deadline.stop();
    if (std::exchange(m_isWantedAgain, false))
        run();
    else
        emit finished(problem);
}

} // namespace agent
