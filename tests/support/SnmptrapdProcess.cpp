// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "SnmptrapdProcess.h"

#include <QFile>

#include "AgentProcess.h"
#include "RunUntil.h"
#include "SnmpTool.h"

namespace support {

namespace {

const char mark[] = "notification: ";

} // namespace

SnmptrapdProcess::SnmptrapdProcess(const QByteArray& directives) : m_directives(directives) {}

SnmptrapdProcess::~SnmptrapdProcess()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished();
}

bool SnmptrapdProcess::start()
{
    for (int attempt = 0; attempt < 10; ++attempt) { // another test may have taken the free port
        if (startOnce())
            return true;
    }
    return false;
}

bool SnmptrapdProcess::startOnce()
{
    m_log.clear();
    m_port = AgentProcess::freePort();
    QFile configuration(m_directory.filePath(QStringLiteral("snmptrapd.conf")));
    if (!configuration.open(QIODevice::WriteOnly))
        return false;
    configuration.write("disableAuthorization yes\n" + m_directives);
    configuration.close();
    m_process.setProcessEnvironment(SnmpTool::environment(m_directory.path()));
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.start(QStringLiteral(VIGIL_SNMPTRAPD_PROGRAM),
                    {QStringLiteral("-f"), QStringLiteral("-Lo"), QStringLiteral("-n"), QStringLiteral("-t"),
                     QStringLiteral("-X"), QStringLiteral("-C"), QStringLiteral("-c"),
                     configuration.fileName(), QStringLiteral("-m"),
                     QStringLiteral("SNMPv2-MIB:VIGIL-AGENT-MIB"), QStringLiteral("-OQs"),
                     QStringLiteral("-F"), QLatin1String(mark) + QStringLiteral("%V; %v\\n"), address()});
    runUntil(
        [this] { return log().contains("NET-SNMP version") || m_process.state() == QProcess::NotRunning; });
    return m_process.state() == QProcess::Running;
}

const QByteArray& SnmptrapdProcess::log()
{
    m_log += m_process.readAllStandardOutput();
    return m_log;
}

QStringList SnmptrapdProcess::notifications()
{
    const QStringList lines = QString::fromUtf8(log()).split(QLatin1Char('\n'));
    QStringList found;
    for (const QString& line : lines.mid(0, lines.size() - 1)) { // the last one may not be complete
        if (line.startsWith(QLatin1String(mark)))
            found += line.section(QStringLiteral("; "), 1);
    }
    return found;
}

QStringList SnmptrapdProcess::waitForNotifications(int count)
{
    runUntil([&] { return notifications().size() >= count; });
    return notifications();
}

} // namespace support
