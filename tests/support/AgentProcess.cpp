// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "AgentProcess.h"

#include <QDir>
#include <QHostAddress>
#include <QProcessEnvironment>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QUdpSocket>

#include <csignal>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "RunUntil.h"

namespace support {

namespace {

// Below the ports that the system hands out: while a program restarts, no other socket gets its port.
constexpr int firstFreePort = 10'000;
constexpr int endOfFreePorts = 32'768;
constexpr int portsOfBlock = 16;

const QByteArray readyText = "listening for applications on 127.0.0.1:";

constexpr char otherProgram[] = "VIGIL_TEST_AGENT"; // runs the agent for Windows under Wine

/// Keeps every file of the agent in directory.
QProcessEnvironment environment(const QTemporaryDir& directory)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (AgentProcess::isForWindows()) { // Wine drops its prefix; its own files are not the agent's
        for (const char* variable : {"WINETEMP", "WINETMP"})
            environment.insert(QLatin1String(variable), QStringLiteral("Z:") + directory.path());
    } else {
        for (const char* variable : {"TMPDIR", "HOME", "SNMP_PERSISTENT_DIR"})
            environment.insert(QLatin1String(variable), directory.path());
    }
    return environment;
}

/// Binds the port for the life of this process. Returns false if another process has it.
bool holdPort(int port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<quint16>(port));
    const int held = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(held, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return true;
    close(held);
    return false;
}

/// The next port of a block whose first port this process holds, so no other test has the same block.
int nextPort()
{
    static int next = 0;
    static int end = 0;
    while (next == end) {
        constexpr int blocks = (endOfFreePorts - firstFreePort) / portsOfBlock;
        const int first = firstFreePort + QRandomGenerator::global()->bounded(blocks) * portsOfBlock;
        if (!holdPort(first))
            continue;
        next = first + 1;
        end = first + portsOfBlock;
    }
    return next++;
}

QStringList filesIn(const QTemporaryDir& directory)
{
    return QDir(directory.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
}

} // namespace

AgentProcess::AgentProcess(const QStringList& arguments) : m_arguments(arguments) {}

AgentProcess::AgentProcess(const QString& agentxAddress, const QStringList& arguments)
    : m_arguments(arguments), m_agentxAddress(agentxAddress)
{}

AgentProcess::~AgentProcess()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    resume();
    m_process.kill();
    m_process.waitForFinished();
}

bool AgentProcess::start()
{
    for (int attempt = 0; attempt < 10; ++attempt) { // another test may have taken a free port
        if (startOnce())
            return true;
        if (!m_log.contains("cannot serve on") && !m_log.contains("cannot listen for applications"))
            return false;
    }
    return false;
}

bool AgentProcess::startOnce()
{
    m_log.clear();
    const quint16 port = m_applicationPort != 0 ? m_applicationPort : freePort();
    m_process.setProcessEnvironment(environment(m_directory));
    if (isForWindows()) {
        m_logFile.setFileName(m_logDirectory.filePath(QStringLiteral("log")));
        m_logFile.close();
        m_process.setStandardErrorFile(m_logFile.fileName());
    }
    m_process.start(program(),
                    roleArguments() +
                        QStringList{QStringLiteral("--listen"), QStringLiteral("127.0.0.1:%1").arg(port)} +
                        m_arguments);
    if (isForWindows() && m_process.waitForStarted())
        m_logFile.open(QIODevice::ReadOnly);
    const auto isReadyOrOver = [this] {
        const int ready = log().indexOf(readyText);
        return (ready >= 0 && log().indexOf('\n', ready) > 0) || m_process.state() == QProcess::NotRunning;
    };
    if (!runUntil(isReadyOrOver) || m_process.state() == QProcess::NotRunning) {
        log();
        return false;
    }
    const int start = m_log.indexOf(readyText) + readyText.size();
    m_applicationPort = m_log.mid(start, m_log.indexOf('\n', start) - start).toUShort();
    return m_applicationPort != 0;
}

QStringList AgentProcess::roleArguments()
{
    if (!m_agentxAddress.isEmpty())
        return {QStringLiteral("--agentx"), m_agentxAddress};
    m_snmpPort = freePort();
    return {QStringLiteral("--standalone"), udpAddress() + QLatin1Char(',') + tcpAddress()};
}

const QByteArray& AgentProcess::log()
{
    m_log += isForWindows() ? m_logFile.readAll() : m_process.readAllStandardError();
    return m_log;
}

bool AgentProcess::waitForLog(const QByteArray& text, int times)
{
    return runUntil([&] { return log().count(text) >= times; });
}

int AgentProcess::stop()
{
    askToEnd(m_process);
    if (!runUntil([this] { return m_process.state() == QProcess::NotRunning; }))
        return -1;
    log();
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

bool AgentProcess::kill()
{
    m_process.kill();
    return runUntil([this] { return m_process.state() == QProcess::NotRunning; });
}

void AgentProcess::reload()
{
    ::kill(static_cast<pid_t>(m_process.processId()), SIGHUP);
}

void AgentProcess::suspend()
{
    ::kill(static_cast<pid_t>(m_process.processId()), SIGSTOP);
}

void AgentProcess::resume()
{
    ::kill(static_cast<pid_t>(m_process.processId()), SIGCONT);
}

AgentProcess::Outcome AgentProcess::run(const QStringList& arguments)
{
    const QTemporaryDir directory;
    QProcess process;
    process.setProcessEnvironment(environment(directory));
    process.start(program(), arguments);
    Outcome outcome;
    if (!process.waitForFinished(deadlineMs)) {
        process.kill();
        process.waitForFinished();
        outcome.err = "still running: ";
    } else if (process.exitStatus() == QProcess::NormalExit) {
        outcome.exitCode = process.exitCode();
    }
    outcome.out = process.readAllStandardOutput();
    outcome.err += process.readAllStandardError();
    outcome.filesLeft = filesIn(directory);
    return outcome;
}

QString AgentProcess::program()
{
    return qEnvironmentVariable(otherProgram, QStringLiteral(VIGIL_AGENT_PROGRAM));
}

void AgentProcess::askToEnd(QProcess& agent)
{
    if (isForWindows())
        ::kill(static_cast<pid_t>(agent.processId()), SIGINT); // Wine passes it on as Ctrl-C
    else
        agent.terminate();
}

bool AgentProcess::isForWindows()
{
    return qEnvironmentVariableIsSet(otherProgram);
}

QStringList AgentProcess::filesLeft() const
{
    return filesIn(m_directory);
}

quint16 AgentProcess::freePort()
{
    while (true) {
        const auto port = static_cast<quint16>(nextPort());
        QUdpSocket datagrams;
        QTcpServer streams;
        if (datagrams.bind(QHostAddress(QHostAddress::LocalHost), port, QAbstractSocket::DontShareAddress) &&
            streams.listen(QHostAddress::LocalHost, port))
            return port;
    }
}

} // namespace support
