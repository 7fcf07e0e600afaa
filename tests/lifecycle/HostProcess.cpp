// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "lifecycle/HostProcess.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcessEnvironment>

#include "support/LoadFreeTimer.h"
#include "support/RunUntil.h"

HostProcess::HostProcess(const QString& program, const QStringList& arguments, int servicePort, Errors errors)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("VIGIL_LOG_DIR"), m_logDirectory.path());
    environment.insert(QStringLiteral("TMPDIR"), m_logDirectory.path()); // the log's next choice
    environment.insert(QStringLiteral("VIGIL_SERVICE_PORT"), QString::number(servicePort));
    // Hosts that end with live checks leak on purpose, and one loads the library twice. Other tests look for
    // leaks.
    environment.insert(QStringLiteral("ASAN_OPTIONS"),
                       QStringLiteral("detect_leaks=0:detect_odr_violation=0"));
    if (HOSTS_WAIT_FOR_REST)
        environment.insert(QStringLiteral("VIGIL_TEST_HOST_WAITS"), QStringLiteral("1"));
    m_process.setProcessEnvironment(environment);
    if (errors == Errors::Shown)
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    else
        m_process.setStandardErrorFile(QProcess::nullDevice());
    m_process.start(program, arguments);
}

HostProcess::~HostProcess()
{
    m_process.kill();
    m_process.waitForFinished();
}

void HostProcess::readOutput()
{
    m_output += m_process.readAllStandardOutput().replace('\r', ""); // Windows ends lines with CR and LF
}

bool HostProcess::isOver() const
{
    return m_process.state() == QProcess::NotRunning;
}

bool HostProcess::waitForLine(const QString& line)
{
    support::runUntil([&] { return hasLine(line) || isOver(); });
    return hasLine(line);
}

bool HostProcess::hasLine(const QString& line)
{
    readOutput();
    return m_output.contains(line.toUtf8() + '\n');
}

void HostProcess::say(const QString& line)
{
    m_process.write(line.toUtf8() + '\n');
}

/// Idle means: the client thread runs, and the log has not grown for a while.
void HostProcess::waitForRest()
{
    constexpr int restMs = 300;
    QElapsedTimer unchanged;
    unchanged.start();
    QStringList before;
    support::runUntil([&] {
        const QStringList now = log();
        if (now != before || now.filter(QLatin1String("Event loop started")).isEmpty())
            unchanged.restart();
        before = now;
        return unchanged.hasExpired(restMs);
    });
}

int HostProcess::exitCode()
{
    const support::LoadFreeTimer starting({m_process.processId()});
    support::runUntil([this] {
        return hasLine(QStringLiteral("ready")) || hasLine(QStringLiteral("leaving")) || isOver();
    });
    if (HOSTS_WAIT_FOR_REST && hasLine(QStringLiteral("ready"))) {
        waitForRest();
        say(QStringLiteral("go"));
    }
    waitForLine(QStringLiteral("leaving"));
    m_startingMs = starting.elapsedMs();
    const support::LoadFreeTimer leaving({m_process.processId()});
    support::runUntil([this] { return isOver(); });
    m_leavingMs = leaving.elapsedMs();
    readOutput();
    if (!isOver() || m_leavingMs > limitMs || m_process.exitStatus() == QProcess::CrashExit)
        return -1;
    return m_process.exitCode();
}

QString HostProcess::ending() const
{
    if (!endedByItself())
        return QStringLiteral("runs after %1 ms, %2").arg(m_leavingMs).arg(placesOf(m_process.processId()));
    const bool hasCrashed = m_process.exitStatus() == QProcess::CrashExit;
    return QStringLiteral("%1 with code %2 after %3 ms")
        .arg(hasCrashed ? QStringLiteral("crashed") : QStringLiteral("exited"))
        .arg(m_process.exitCode())
        .arg(m_leavingMs);
}

QStringList HostProcess::log() const
{
    QStringList lines;
    const QFileInfoList files =
        QDir(m_logDirectory.path()).entryInfoList({QStringLiteral("*.log")}, QDir::Files, QDir::Name);
    for (const QFileInfo& info : files) {
        QFile file(info.absoluteFilePath());
        if (file.open(QIODevice::ReadOnly))
            lines += QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    return lines;
}
