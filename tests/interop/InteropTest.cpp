// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// What integrations/ has, with the programs it is for.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTcpSocket>
#include <QTemporaryDir>

#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::FakeApplication;
using support::SnmpTool;

namespace {

const QString integrations = QStringLiteral(VIGIL_INTEGRATIONS);

constexpr const char* disk = "3.97.112.112.4.100.105.115.107";       // "app", "disk"
constexpr const char* queue = "3.97.112.112.3.195.150.108";          // "app", "Öl"
constexpr const char* used = "3.97.112.112.4.100.105.115.107.1.117"; // "app", "disk", "u"

/// The path of a program, also if it is among those for administrators or plugins; empty if it is missing.
QString pathOf(const char* program)
{
    const QString found = QStandardPaths::findExecutable(QLatin1String(program));
    if (!found.isEmpty())
        return found;
    return QStandardPaths::findExecutable(QLatin1String(program),
                                          {QStringLiteral("/usr/sbin"), QStringLiteral("/usr/local/sbin"),
                                           QStringLiteral("/usr/lib/nagios/plugins")});
}

struct Outcome
{
    int exitCode = -1;
    QString out; ///< both channels
};

/// The event loop runs meanwhile, for the fake application.
Outcome run(const QString& program, const QStringList& arguments, const QString& folder,
            const QProcessEnvironment& environment)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setWorkingDirectory(folder);
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!support::runUntil([&] { return process.state() == QProcess::NotRunning; }))
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAll())};
}

/// The body and header of a page on this host; empty if nothing answers.
QByteArray page(quint16 port, const QByteArray& path)
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), port);
    if (!socket.waitForConnected())
        return {};
    socket.write("GET " + path + " HTTP/1.0\r\nHost: 127.0.0.1\r\n\r\n");
    support::runUntil([&] { return socket.state() == QAbstractSocket::UnconnectedState; });
    return socket.readAll();
}

class Interop : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(directory.isValid());
        environment = SnmpTool::environment(directory.path());
        environment.insert(QStringLiteral("PATH"),
                           QProcessEnvironment::systemEnvironment().value(QStringLiteral("PATH")));
    }

    void startAgent()
    {
        ASSERT_TRUE(agent.start()) << agent.log().constData();
        application = std::make_unique<FakeApplication>(agent.applicationPort());
    }

    void publishCheck(const char* check, int status, const std::string& summary)
    {
        application->publish(std::string("127.3.1.200.4.1.1.3.") + check, status);
        application->publish(std::string("127.3.1.200.4.1.1.4.") + check, summary);
    }

    /// Two checks and a metric.
    void publishHealth(int diskStatus)
    {
        publishCheck(disk, diskStatus, "u is 72.5 MB.");
        publishCheck(queue, 0, "all is well.");
        const auto publish = [this](const char* column, const auto& value) {
            application->publish(std::string("127.3.1.200.4.") + column + '.' + used, value);
        };
        publish("3.1.1", diskStatus);
        publish("4.1.2", std::string("72.5"));
        publish("4.1.3", std::string(" MB"));
        publish("4.1.4", std::string("~:50"));
        publish("4.1.5", std::string("@10:20"));
        application->publish("999.1", ++m_marks);
        ASSERT_TRUE(SnmpTool(agent.udpAddress()).waitFor(support::full("999.1"), QString::number(m_marks)));
    }

    Outcome checkVigil(const QStringList& arguments)
    {
        return run(integrations + QStringLiteral("/nagios/check_vigil"), arguments, directory.path(),
                   environment);
    }

    /// The name of this user or group, by the option of id.
    QString ownName(const QString& option) const
    {
        return run(QStringLiteral("id"), {option}, directory.path(), environment).out.trimmed();
    }

    QTemporaryDir directory;
    QProcessEnvironment environment;
    AgentProcess agent;
    std::unique_ptr<FakeApplication> application;

private:
    int m_marks = 0;
};

#define SKIP_WITHOUT(program)                                                                                \
    if (pathOf(program).isEmpty())                                                                           \
    GTEST_SKIP() << program << " is not installed"

} // namespace

TEST_F(Interop, ThePluginFindsAllChecks)
{
    SKIP_WITHOUT("python3");
    startAgent();
    publishHealth(2);
    Outcome outcome = checkVigil({QStringLiteral("-H"), agent.udpAddress()});
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.out, QStringLiteral("VIGIL CRITICAL - 1 critical, 1 ok; app/disk: u is 72.5 MB. | "
                                          "'app/disk/u'=72.5MB;~:50;@10:20\n"
                                          "[CRITICAL] app/disk: u is 72.5 MB.\n"
                                          "[OK] app/Öl: all is well.\n"));
    outcome = checkVigil(
        {QStringLiteral("-H"), agent.udpAddress(), QStringLiteral("-n"), QStringLiteral("app/Öl")});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, QStringLiteral("VIGIL OK - 1 ok\n[OK] app/Öl: all is well.\n"));
    publishHealth(3);
    EXPECT_EQ(checkVigil({QStringLiteral("-H"), agent.udpAddress()}).exitCode, 3);
}

TEST_F(Interop, ThePluginIsUnknownWithoutAnAnswer)
{
    SKIP_WITHOUT("python3");
    startAgent();
    EXPECT_EQ(checkVigil({QStringLiteral("-H"), agent.udpAddress()}).out,
              QStringLiteral("VIGIL UNKNOWN - no health checks\n"));
    const Outcome wrong = checkVigil({QStringLiteral("-H"), agent.udpAddress(), QStringLiteral("-C"),
                                      QStringLiteral("wrong"), QStringLiteral("-t"), QStringLiteral("1")});
    EXPECT_EQ(wrong.exitCode, 3);
    EXPECT_EQ(wrong.out, QStringLiteral("VIGIL UNKNOWN - no answer within 1 seconds\n"));
    EXPECT_EQ(checkVigil({}).exitCode, 3);
    EXPECT_EQ(checkVigil(
                  {QStringLiteral("-H"), agent.udpAddress(), QStringLiteral("-n"), QStringLiteral("no/such")})
                  .out,
              QStringLiteral("VIGIL UNKNOWN - no such health check: no/such\n"));
}

TEST_F(Interop, OneLineOfCheckSnmpWatchesAHost)
{
    SKIP_WITHOUT("check_snmp");
    startAgent();
    const auto check = [this] {
        return run(pathOf("check_snmp"),
                   {QStringLiteral("-H"), QStringLiteral("127.0.0.1"), QStringLiteral("-p"),
                    QString::number(agent.snmpPort()), QStringLiteral("-C"), QStringLiteral("public"),
                    QStringLiteral("-o"), QStringLiteral("1.3.6.1.4.1.32473.127.3.1.200.5.3.7.0"),
                    QStringLiteral("-w"), QStringLiteral("0:1"), QStringLiteral("-c"), QStringLiteral("0:2")},
                   directory.path(), environment);
    };
    const int expected[] = {0, 1, 2, 0}; // UNKNOWN is OK in this line: -w 0:0 makes it a warning
    for (int status = 0; status < 4; ++status) {
        publishHealth(status);
        const Outcome outcome = check();
        EXPECT_EQ(outcome.exitCode, expected[status]) << qPrintable(outcome.out);
    }
}

TEST_F(Interop, Icinga2AcceptsTheConfiguration)
{
    SKIP_WITHOUT("icinga2");
    QFile file(directory.filePath(QStringLiteral("icinga2.conf")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(
        "const PluginDir = \"" + (integrations + QStringLiteral("/nagios")).toUtf8() +
        "\"\n"
        "object CheckCommand \"dummy\" { command = [ \"/bin/true\" ] }\n"
        "object Host \"a\" { check_command = \"dummy\"\n address = \"127.0.0.1\"\n vars.vigil = true }\n"
        "object Host \"b\" { check_command = \"dummy\"\n address = \"127.0.0.1\" }\n"
        "include \"" +
        integrations.toUtf8() + "/icinga/vigil.conf\"\n");
    file.close();
    const QString folder = directory.path();
    environment.insert(QStringLiteral("ICINGA2_USER"), ownName(QStringLiteral("-un")));
    environment.insert(QStringLiteral("ICINGA2_GROUP"), ownName(QStringLiteral("-gn")));
    const Outcome outcome =
        run(pathOf("icinga2"),
            {QStringLiteral("daemon"), QStringLiteral("-C"), QStringLiteral("-c"), file.fileName(),
             QStringLiteral("-D"), QStringLiteral("DataDir=") + folder, QStringLiteral("-D"),
             QStringLiteral("LogDir=") + folder, QStringLiteral("-D"), QStringLiteral("CacheDir=") + folder,
             QStringLiteral("-D"), QStringLiteral("InitRunDir=") + folder},
            folder, environment);
    EXPECT_EQ(outcome.exitCode, 0) << qPrintable(outcome.out);
    EXPECT_TRUE(outcome.out.contains(QStringLiteral("1 Service"))) << qPrintable(outcome.out);
}

TEST_F(Interop, SnmpttsConverterMakesReadableLines)
{
    SKIP_WITHOUT("snmpttconvertmib");
    const QString result = directory.filePath(QStringLiteral("snmptt.conf"));
    const Outcome outcome = run(pathOf("snmpttconvertmib"),
                                {QStringLiteral("--in=" VIGIL_MIB_FOLDER "/VIGIL-MIB.txt"),
                                 QStringLiteral("--out=") + result, QStringLiteral("--net_snmp_perl=0")},
                                directory.path(), environment);
    EXPECT_TRUE(outcome.out.contains(QStringLiteral("Successful translations:   2")))
        << qPrintable(outcome.out);
    QFile file(result);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    EXPECT_TRUE(text.contains("EVENT vigilHealthStatusChanged .1.3.6.1.4.1.32473.127.3.1.200.4.0.1 "
                              "\"Status Events\" WARNING\n"
                              "FORMAT Health check changed: $4/$5 is $1: $3\n"))
        << text.constData();
}

TEST_F(Interop, SnmpExporterShowsNamesAndNumbers)
{
    SKIP_WITHOUT("prometheus-snmp-exporter");
    startAgent();
    publishHealth(1);
    const quint16 port = AgentProcess::freePort();
    QProcess exporter;
    exporter.setProcessChannelMode(QProcess::MergedChannels);
    exporter.start(pathOf("prometheus-snmp-exporter"),
                   {QStringLiteral("--config.file=") + integrations + QStringLiteral("/prometheus/snmp.yml"),
                    QStringLiteral("--web.listen-address=127.0.0.1:%1").arg(port)});
    ASSERT_TRUE(exporter.waitForStarted());
    QByteArray metrics;
    EXPECT_TRUE(support::runUntil([&] {
        metrics = page(port, "/snmp?module=vigil&target=127.0.0.1:" + QByteArray::number(agent.snmpPort()));
        return metrics.contains("vigilAgentChecks ");
    })) << metrics.constData();
    exporter.kill();
    exporter.waitForFinished();
    for (const char* line :
         {"\nvigilAgentChecks 2\n", "\nvigilAgentWorstSeverity 2\n",
          "\nvigilAgentCheckSeverity{vigilAgentCheckIndex=\"1\",vigilAgentCheckName=\"app/disk\"} 2\n",
          "\nvigilAgentCheckStatus{vigilAgentCheckIndex=\"2\",vigilAgentCheckName=\"app/Öl\"} 0\n",
          "vigilAgentMetricName=\"app/disk/u\"} 72500\n"})
        EXPECT_TRUE(metrics.contains(line)) << line << metrics.constData();
}

TEST_F(Interop, TheGeneratorMakesTheConfigurationOfSnmpExporter)
{
    SKIP_WITHOUT("prometheus-snmp-generator");
    const QString folder = integrations + QStringLiteral("/prometheus/");
    ASSERT_TRUE(QFile::copy(folder + QStringLiteral("generator.yml"),
                            directory.filePath(QStringLiteral("generator.yml"))));
    const Outcome outcome =
        run(pathOf("prometheus-snmp-generator"), {QStringLiteral("generate")}, directory.path(), environment);
    ASSERT_EQ(outcome.exitCode, 0) << qPrintable(outcome.out);
    QFile made(directory.filePath(QStringLiteral("snmp.yml")));
    QFile stored(folder + QStringLiteral("snmp.yml"));
    ASSERT_TRUE(made.open(QIODevice::ReadOnly) && stored.open(QIODevice::ReadOnly));
    EXPECT_TRUE(stored.readAll().endsWith(made.readAll()));
}

TEST_F(Interop, PromtoolAcceptsTheAlertRules)
{
    SKIP_WITHOUT("promtool");
    const QString folder = integrations + QStringLiteral("/prometheus");
    for (const QStringList& arguments :
         {QStringList{QStringLiteral("check"), QStringLiteral("config"), QStringLiteral("prometheus.yml")},
          QStringList{QStringLiteral("test"), QStringLiteral("rules"), QStringLiteral("rules-test.yml")}}) {
        const Outcome outcome = run(pathOf("promtool"), arguments, folder, environment);
        EXPECT_EQ(outcome.exitCode, 0) << qPrintable(outcome.out);
    }
}
