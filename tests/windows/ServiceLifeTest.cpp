// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The agent as a Windows service, under the machine's own service manager. The tests share its one service,
// so they run one after the other, on a machine that may lose it.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QHostAddress>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QUdpSocket>

#include <aclapi.h>
#include <sddl.h>

#include "WindowsService.h"
#include "agent/core/FileRights.h"
#include "agent/process/ServiceFolders.h"
#include "agent/process/ServiceInstallation.h"
#include "support/Deadline.h"
#include "support/QtPrinters.h"
#include "support/RunUntil.h"

namespace folders = agent::serviceFolders;
using agent::serviceInstallation::Outcome;
using windows::WindowsService;

namespace {

class ServiceLife : public testing::Test
{
protected:
    void SetUp() override { service.clear(); }
    void TearDown() override { service.clear(); }

    /// Options for free ports, and these.
    static QStringList installing(const QStringList& more = {})
    {
        return QStringList{QStringLiteral("--install-service"), QStringLiteral("--standalone"),
                           QStringLiteral("udp:127.0.0.1:%1").arg(freeUdpPort()), QStringLiteral("--listen"),
                           QStringLiteral("127.0.0.1:0")} +
               more;
    }

    static quint16 freeUdpPort()
    {
        QUdpSocket socket;
        socket.bind(QHostAddress(QHostAddress::LocalHost), 0);
        return socket.localPort();
    }

    void install(const QStringList& more = {})
    {
        const WindowsService::Outcome outcome = service.run(installing(more));
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err.constData();
    }

    void expectStoppedWithError(DWORD exitCode)
    {
        ASSERT_TRUE(service.waitFor(SERVICE_STOPPED));
        EXPECT_EQ(service.status().dwWin32ExitCode, DWORD(ERROR_SERVICE_SPECIFIC_ERROR));
        EXPECT_EQ(service.status().dwServiceSpecificExitCode, exitCode);
    }

    WindowsService service;
};

/// The agent as the service SNMP, in place of Windows' own one. It does not use the port 161.
class SnmpStandIn
{
public:
    explicit SnmpStandIn(const QString& commandLine)
    {
        m_service.remove();
        m_isMade = m_service.create(commandLine);
    }
    ~SnmpStandIn() { m_service.remove(); }
    SnmpStandIn(const SnmpStandIn&) = delete;
    SnmpStandIn& operator=(const SnmpStandIn&) = delete;

    bool start() const { return m_isMade && m_service.start(); }

private:
    const WindowsService m_service{QStringLiteral("SNMP")};
    bool m_isMade = false;
};

/// Tests at the same time have different ones.
QString freeLoopbackHost()
{
    const quint32 number = QRandomGenerator::global()->bounded(1U, 0xfffffeU);
    return QHostAddress(0x7f000000U | number).toString();
}

bool isUnderWine()
{
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

/// Lets everyone read the file.
void publish(const QString& path)
{
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(
        L"D:P(A;;FA;;;BA)(A;;FA;;;SY)(A;;FR;;;WD)", SDDL_REVISION_1, &descriptor, nullptr));
    EXPECT_TRUE(SetFileSecurityW(path.toStdWString().c_str(), DACL_SECURITY_INFORMATION, descriptor));
    LocalFree(descriptor);
}

} // namespace

TEST_F(ServiceLife, InstalledItStartsServesAndStops)
{
    install();
    EXPECT_EQ(service.startType(), DWORD(SERVICE_AUTO_START));
    EXPECT_EQ(service.account(), QStringLiteral("NT SERVICE\\vigil-agent"));
    ASSERT_TRUE(service.start()) << service.log().constData();
    EXPECT_EQ(service.status().dwCheckPoint, 0U);
    ASSERT_TRUE(service.waitForLog("listening for applications on 127.0.0.1:"));
    EXPECT_EQ(service.control(SERVICE_CONTROL_STOP), DWORD(NO_ERROR));
    ASSERT_TRUE(service.waitFor(SERVICE_STOPPED));
    EXPECT_EQ(service.status().dwWin32ExitCode, DWORD(NO_ERROR));
    EXPECT_TRUE(service.log().contains(" ending\r\n")) << service.log().constData();
}

TEST_F(ServiceLife, ApplicationsCanConnect)
{
    install();
    ASSERT_TRUE(service.start()) << service.log().constData();
    const QByteArray mark = "listening for applications on 127.0.0.1:";
    ASSERT_TRUE(service.waitForLog(mark));
    ASSERT_TRUE(service.waitForLog("\r\n", 2));
    const QByteArray log = service.log();
    const int start = log.indexOf(mark) + mark.size();
    QTcpSocket socket;
    socket.connectToHost(QHostAddress(QHostAddress::LocalHost),
                         log.mid(start, log.indexOf('\r', start) - start).toUShort());
    EXPECT_TRUE(socket.waitForConnected(support::deadlineMs)) << log.constData();
}

TEST_F(ServiceLife, ItsOptionsReachItWhole)
{
    QTemporaryDir directory;
    const QString state = directory.filePath(QString::fromUtf8("K\xc3\xb6nig \xd0\x96\\"));
    install({QStringLiteral("--state-directory"), state, QStringLiteral("--verbose")});
    const QString line = service.commandLine();
    EXPECT_TRUE(line.contains(QStringLiteral("vigil-agent.exe\" --service --standalone udp:")))
        << qPrintable(line);
    EXPECT_TRUE(line.contains(QString::fromUtf8("\\K\xc3\xb6nig \xd0\x96\\\\\" --verbose --config ")))
        << qPrintable(line);
    EXPECT_FALSE(line.contains(QStringLiteral("--install-service")));
    ASSERT_TRUE(service.start()) << service.log().constData();
}

TEST_F(ServiceLife, AFolderOutsideAsciiServesAsWell)
{
    QTemporaryDir directory;
    const QString folder = directory.filePath(QString::fromUtf8("K\xc3\xb6nig \xd0\x96"));
    ASSERT_TRUE(QDir().mkpath(folder));
    const QDir programs(QFileInfo(QStringLiteral(VIGIL_AGENT_PROGRAM)).path());
    for (const QString& name :
         programs.entryList({QStringLiteral("*.dll"), QStringLiteral("vigil-agent.exe")}))
        ASSERT_TRUE(QFile::copy(programs.filePath(name), folder + QLatin1Char('/') + name));
    const WindowsService::Outcome outcome = service.run(installing(), folder);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err.constData();
    EXPECT_TRUE(service.start()) << service.log().constData();
    service.clear();
}

TEST_F(ServiceLife, TheConfigurationIsMadeFromTheExampleForTheTrustedAlone)
{
    install();
    QFile file(folders::configFile());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().contains("rocommunity public 127.0.0.1\r\n"));
    for (const QString& path : {folders::root(), folders::state(), folders::log(), folders::configFile()}) {
        QString stranger;
        EXPECT_FALSE(agent::fileRights::findStranger(path, stranger));
        EXPECT_EQ(stranger, QString()) << qPrintable(path);
    }
}

TEST_F(ServiceLife, AnEarlierConfigurationStays)
{
    install();
    QFile file(folders::configFile());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("rocommunity mine 127.0.0.1\n");
    file.close();
    EXPECT_EQ(service.run({QStringLiteral("--uninstall-service")}).exitCode, 0);
    install();
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray("rocommunity mine 127.0.0.1\n"));
}

TEST_F(ServiceLife, ItRefusesAConfigurationThatOthersMayRead)
{
    install();
    publish(folders::configFile());
    EXPECT_FALSE(service.start());
    expectStoppedWithError(1);
    EXPECT_TRUE(service.log().contains("error: the configuration file ")) << service.log().constData();
    EXPECT_TRUE(service.log().contains("holds secrets")) << service.log().constData();
}

TEST_F(ServiceLife, AFolderOfAnotherUserIsRefused)
{
    ASSERT_TRUE(QDir().mkpath(folders::root()));
    publish(folders::root());
    const WindowsService::Outcome outcome = service.run(installing());
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.err.contains("has rights to the folder")) << outcome.err.constData();
    EXPECT_EQ(service.commandLine(), QString());
}

TEST_F(ServiceLife, WhatKeepsItFromServingIsInTheLogWithTheExitCode)
{
    QTcpServer occupant;
    ASSERT_TRUE(occupant.listen(QHostAddress::LocalHost));
    install({QStringLiteral("--listen"), QStringLiteral("127.0.0.1:%1").arg(occupant.serverPort())});
    EXPECT_FALSE(service.start());
    expectStoppedWithError(1);
    EXPECT_TRUE(service.log().contains("error: cannot listen for applications on 127.0.0.1:"))
        << service.log().constData();
}

// An ordinary user of Linux can bind no port below 1024; then both sockets fail.
TEST_F(ServiceLife, TheSystemsOwnSnmpServiceIsNamedIfItHasThePort)
{
    const QString host = freeLoopbackHost();
    QUdpSocket occupant;
    occupant.bind(QHostAddress(host), 161, QAbstractSocket::DontShareAddress);
    const QStringList options{QStringLiteral("--standalone"), QStringLiteral("udp:%1:161").arg(host),
                              QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0")};
    const WindowsService::Outcome before = service.run(options);
    EXPECT_EQ(before.exitCode, 1);
    EXPECT_FALSE(before.err.contains("SNMP service")) << before.err.constData();

    install();
    const SnmpStandIn standIn(service.commandLine());
    ASSERT_TRUE(standIn.start()) << service.log().constData();
    const WindowsService::Outcome outcome = service.run(options);
    EXPECT_EQ(outcome.exitCode, 1);
    const QByteArray expected =
        "Windows' own SNMP service runs and has the port 161. Stop it (sc stop SNMP) and keep it from "
        "starting (sc config SNMP start= disabled), or choose another port, for example udp:" +
        host.toUtf8() + ":1161\n";
    EXPECT_TRUE(outcome.err.endsWith(expected)) << outcome.err.constData();
}

TEST_F(ServiceLife, PauseIsRefused)
{
    install();
    ASSERT_TRUE(service.start()) << service.log().constData();
    EXPECT_NE(service.control(SERVICE_CONTROL_PAUSE), DWORD(NO_ERROR));
    EXPECT_EQ(service.control(SERVICE_CONTROL_INTERROGATE), DWORD(NO_ERROR));
    EXPECT_EQ(service.status().dwCurrentState, DWORD(SERVICE_RUNNING));
}

TEST_F(ServiceLife, ParamchangeReadsTheConfigurationAgain)
{
    install();
    ASSERT_TRUE(service.start()) << service.log().constData();
    EXPECT_EQ(service.control(SERVICE_CONTROL_PARAMCHANGE), DWORD(NO_ERROR));
    EXPECT_TRUE(service.waitForLog("has been read again\r\n")) << service.log().constData();
    EXPECT_EQ(service.status().dwCurrentState, DWORD(SERVICE_RUNNING));
}

TEST_F(ServiceLife, AfterACrashItIsStartedAgain)
{
    if (isUnderWine())
        GTEST_SKIP() << "Wine's service manager does not notice the end of a process";
    install();
    ASSERT_TRUE(service.start()) << service.log().constData();
    ASSERT_TRUE(service.crash());
    EXPECT_TRUE(service.waitForLog("listening for applications on ", 2));
    EXPECT_TRUE(service.waitFor(SERVICE_RUNNING));
}

TEST_F(ServiceLife, ASecondInstallationIsRefused)
{
    install();
    const WindowsService::Outcome outcome = service.run(installing());
    EXPECT_EQ(outcome.exitCode, Outcome::existsAlready);
    EXPECT_TRUE(outcome.err.contains("error: the service vigil-agent exists already"))
        << outcome.err.constData();
}

TEST_F(ServiceLife, UninstallingStopsItAndKeepsItsFiles)
{
    install();
    ASSERT_TRUE(service.start()) << service.log().constData();
    const WindowsService::Outcome outcome = service.run({QStringLiteral("--uninstall-service")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err.constData();
    // The system keeps it until the service manager has seen the end of its process.
    EXPECT_TRUE(support::runUntil([this] { return service.commandLine().isEmpty(); }));
    EXPECT_TRUE(service.log().contains(" ending\r\n")) << service.log().constData();
    EXPECT_TRUE(QFile::exists(folders::configFile()));
}

TEST_F(ServiceLife, UninstallingNothingSaysSo)
{
    const WindowsService::Outcome outcome = service.run({QStringLiteral("--uninstall-service")});
    EXPECT_EQ(outcome.exitCode, Outcome::doesNotExist);
    EXPECT_TRUE(outcome.err.contains("error: there is no service vigil-agent")) << outcome.err.constData();
}

TEST_F(ServiceLife, TheOptionServiceIsForTheServiceManager)
{
    const WindowsService::Outcome outcome = service.run(
        {QStringLiteral("--service"), QStringLiteral("--standalone"), QStringLiteral("udp:127.0.0.1:0")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.err.contains("the service manager has not started this process"))
        << outcome.err.constData();
}
