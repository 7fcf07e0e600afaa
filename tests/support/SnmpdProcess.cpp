// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "SnmpdProcess.h"

#include <QDir>
#include <QFile>
#include <QProcessEnvironment>

#include <csignal>

#include "AgentProcess.h"
#include "RunUntil.h"

namespace support {

namespace {

// By default snmpd drops an agent after some seconds without a reply; a busy machine may need longer.
const QByteArray patientDirectives = "agentXTimeout 60\n"
                                     "agentXRetries 0\n";

} // namespace

SnmpdProcess::SnmpdProcess(const QByteArray& directives, const QStringList& arguments)
    : m_directives(directives), m_arguments(arguments)
{
    const QString persistent = m_directory.filePath(QStringLiteral("persistent"));
    QDir().mkpath(persistent);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("SNMP_PERSISTENT_DIR"), persistent);
    environment.insert(QStringLiteral("SNMPCONFPATH"), persistent);
    // snmpd syncs each line of this file to the disk before it serves. On a busy disk that takes minutes.
    environment.insert(QStringLiteral("SNMP_PERSISTENT_FILE"), QStringLiteral("/dev/null"));
    environment.insert(QStringLiteral("MIBS"), QString());
    m_process.setProcessEnvironment(environment);
    m_process.setProcessChannelMode(QProcess::MergedChannels);
}

SnmpdProcess::~SnmpdProcess()
{
    if (m_process.state() != QProcess::NotRunning)
        kill();
}

QByteArray SnmpdProcess::openToThisHost()
{
    return "rocommunity public 127.0.0.1\n"
           "rwcommunity private 127.0.0.1\n";
}

bool SnmpdProcess::start()
{
    for (int attempt = 0; attempt < 10; ++attempt) {
        if (startOnce())
            return true;
        if (!m_log.contains("Error opening specified endpoint"))
            return false;
        m_port = 0; // another test has taken the free port
    }
    return false;
}

bool SnmpdProcess::startOnce()
{
    if (m_port == 0)
        m_port = AgentProcess::freePort();
    QFile file(m_directory.filePath(QStringLiteral("test.conf")));
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write("agentaddress " + udpAddress().toUtf8() +
               "\n"
               "master agentx\n"
               "agentXSocket unix:" +
               QFile::encodeName(agentxAddress()) + '\n' + patientDirectives + m_directives);
    file.close();
    m_log.clear();
    m_process.start(QStringLiteral(VIGIL_SNMPD_PROGRAM),
                    QStringList{QStringLiteral("-f"), QStringLiteral("-Lo"), QStringLiteral("-C"),
                                QStringLiteral("-c"), file.fileName(), QStringLiteral("-I"),
                                QStringLiteral("-smux")} +
                        m_arguments);
    const auto isReadyOrOver = [this] {
        return log().contains("NET-SNMP version") || m_process.state() == QProcess::NotRunning;
    };
    return runUntil(isReadyOrOver) && m_process.state() == QProcess::Running;
}

bool SnmpdProcess::stop()
{
    m_process.terminate();
    return waitForEnd();
}

bool SnmpdProcess::kill()
{
    m_process.kill();
    return waitForEnd();
}

bool SnmpdProcess::waitForEnd()
{
    return runUntil([this] { return m_process.state() == QProcess::NotRunning; });
}

void SnmpdProcess::suspend()
{
    ::kill(static_cast<pid_t>(m_process.processId()), SIGSTOP);
}

void SnmpdProcess::resume()
{
    ::kill(static_cast<pid_t>(m_process.processId()), SIGCONT);
}

const QByteArray& SnmpdProcess::log()
{
    m_log += m_process.readAllStandardOutput();
    return m_log;
}

bool SnmpdProcess::waitForLog(const QByteArray& text, int times)
{
    return runUntil([&] { return log().count(text) >= times; });
}

} // namespace support
