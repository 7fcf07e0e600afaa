// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// What integrations/ has, with the programs it is for.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <memory>

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

constexpr int zabbixMs = 960'000; // with an empty database to fill; run_zabbix.py has a time limit of its own

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
            const QProcessEnvironment& environment, int timeoutMs = support::deadlineMs)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setWorkingDirectory(folder);
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!support::runUntil([&] { return process.state() == QProcess::NotRunning; }, timeoutMs))
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
        environment.insert(QStringLiteral("LC_ALL"),
                           QStringLiteral("C.UTF-8")); // others may not be installed
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
    const Outcome open = checkVigil(
        {QStringLiteral("-H"), agent.udpAddress(), QStringLiteral("-S"), QStringLiteral("-c 'public")});
    EXPECT_EQ(open.exitCode, 3);
    EXPECT_EQ(open.out, QStringLiteral("VIGIL UNKNOWN - ValueError: No closing quotation\n"));
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
                    QStringLiteral("-w"), QStringLiteral("0:0"), QStringLiteral("-c"), QStringLiteral("0:2")},
                   directory.path(), environment);
    };
    const int expected[] = {0, 1, 2, 1}; // a plugin cannot tell UNKNOWN from WARNING by a range
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
          QStringList{QStringLiteral("check"), QStringLiteral("config"), QStringLiteral("direct.yml")},
          QStringList{QStringLiteral("test"), QStringLiteral("rules"), QStringLiteral("rules-test.yml")}}) {
        const Outcome outcome = run(pathOf("promtool"), arguments, folder, environment);
        EXPECT_EQ(outcome.exitCode, 0) << qPrintable(outcome.out);
    }
}

// --- Prometheus, directly

namespace {

/// An agent with HTTP, and a Prometheus that scrapes it as integrations/prometheus says, but every second.
class DirectScrape : public Interop
{
protected:
    void TearDown() override
    {
        m_prometheus.kill();
        m_prometheus.waitForFinished();
    }

    void start()
    {
        ASSERT_TRUE(m_agent.start()) << m_agent.log().constData();
        application = std::make_unique<FakeApplication>(m_agent.applicationPort());
        writeConfiguration();
        m_prometheus.setProcessChannelMode(QProcess::MergedChannels);
        m_prometheus.start(pathOf("prometheus"),
                           {QStringLiteral("--config.file=") + inFolder("prometheus.yml"),
                            QStringLiteral("--storage.tsdb.path=") + inFolder("data"),
                            QStringLiteral("--web.listen-address=127.0.0.1:%1").arg(m_port)});
        ASSERT_TRUE(m_prometheus.waitForStarted());
    }

    QByteArray alerts() const { return page(m_port, "/api/v1/alerts"); }

    QString control() const { return inFolder("control"); }

private:
    QString inFolder(const char* name) const { return directory.filePath(QLatin1String(name)); }

    void writeConfiguration() const
    {
        const QString folder = integrations + QStringLiteral("/prometheus/");
        ASSERT_TRUE(QFile::copy(folder + QStringLiteral("direct-rules.yml"), inFolder("direct-rules.yml")));
        QFile stored(folder + QStringLiteral("direct.yml"));
        QFile file(inFolder("prometheus.yml"));
        ASSERT_TRUE(stored.open(QIODevice::ReadOnly) && file.open(QIODevice::WriteOnly));
        QByteArray text = stored.readAll();
        ASSERT_TRUE(text.contains("127.0.0.1:43180"));
        text.replace("127.0.0.1:43180", "127.0.0.1:" + QByteArray::number(m_httpPort));
        file.write("global: {scrape_interval: 1s, evaluation_interval: 1s}\n" + text);
    }

    const quint16 m_port = AgentProcess::freePort();
    const quint16 m_httpPort = AgentProcess::freePort();
    AgentProcess m_agent{{QStringLiteral("--http"), QStringLiteral("127.0.0.1:%1").arg(m_httpPort),
                          QStringLiteral("--control"), control()}};
    QProcess m_prometheus;
};

} // namespace

TEST_F(DirectScrape, PrometheusRaisesAnAlertUnlessTheCheckIsMuted)
{
    SKIP_WITHOUT("prometheus");
    start();
    publishCheck(disk, 2, "full");
    const auto isRaised = [this] {
        const QByteArray active = alerts();
        return active.contains("\"alertname\":\"VigilCheckCritical\"") &&
               active.contains("\"state\":\"firing\"") && active.contains("app/disk on 127.0.0.1:");
    };
    ASSERT_TRUE(support::askUntil(isRaised)) << alerts().constData();
    QLocalSocket operators;
    operators.connectToServer(control());
    operators.write("{\"command\":\"mute\",\"check\":1,\"name\":\"app/disk\",\"seconds\":3600}\n");
    ASSERT_TRUE(support::runUntil([&] { return operators.state() == QLocalSocket::UnconnectedState; }));
    EXPECT_TRUE(support::askUntil([this] { return alerts().contains("\"alerts\":[]"); }))
        << alerts().constData();
}

// --- Configurations with object identifiers

TEST_F(Interop, EveryIdentifierIsAnObjectOfTheMib)
{
    static const QRegularExpression identifier(
        QStringLiteral("1\\.3\\.6\\.1\\.4\\.1\\.32473\\.127\\.3\\.1\\.200\\.5[0-9.]*[0-9]"));
    int found = 0;
    for (const char* file : {"zabbix/vigil.yaml", "collectd/vigil.conf", "telegraf/vigil.conf"}) {
        QFile configuration(integrations + QLatin1Char('/') + QLatin1String(file));
        ASSERT_TRUE(configuration.open(QIODevice::ReadOnly)) << file;
        auto match = identifier.globalMatch(QString::fromUtf8(configuration.readAll()));
        for (; match.hasNext(); ++found) {
            const QString oid = match.next().captured();
            const Outcome name = run(QStringLiteral("snmptranslate"),
                                     {QStringLiteral("-m"), QStringLiteral("VIGIL-AGENT-MIB"), oid},
                                     directory.path(), environment);
            static const QRegularExpression object(
                QStringLiteral("^VIGIL-AGENT-MIB::vigilAgent(Check|Metric)[A-Z][A-Za-z]+$|"
                               "^VIGIL-AGENT-MIB::vigilAgent[A-Za-z]+\\.0$"));
            EXPECT_TRUE(object.match(name.out.trimmed().section(QLatin1Char('\n'), -1)).hasMatch())
                << file << ": " << qPrintable(oid + name.out);
        }
    }
    EXPECT_GT(found, 20);
}

TEST_F(Interop, TheZabbixTemplateIsSound)
{
    SKIP_WITHOUT("python3");
    const Outcome outcome = run(pathOf("python3"),
                                {QStringLiteral(VIGIL_INTEROP_TESTS "/check_zabbix_template.py"),
                                 integrations + QStringLiteral("/zabbix/vigil.yaml")},
                                directory.path(), environment);
    if (outcome.out.contains(QStringLiteral("No module named 'yaml'")))
        GTEST_SKIP() << "python3-yaml is not installed";
    EXPECT_EQ(outcome.exitCode, 0) << qPrintable(outcome.out);
}

TEST_F(Interop, ZabbixImportsTheTemplateDiscoversAndAlerts)
{
    SKIP_WITHOUT("python3");
    startAgent();
    publishHealth(2);
    const QStringList expected{
        QStringLiteral("item | Vigil: worst severity | 3"),
        QStringLiteral("item | Vigil: health checks | 2"),
        QStringLiteral("item | app/disk: severity | 3"),
        QStringLiteral("item | app/disk: summary | u is 72.5 MB."),
        QStringLiteral("item | app/disk: muted for | 0"),
        QStringLiteral("item | app/Öl: severity | 0"),
        QStringLiteral("item | app/disk/u: value | 72.5"),
        QStringLiteral("item | app/disk/u: severity | 3"),
        QStringLiteral("problem | Vigil: app/disk is CRITICAL"),
    };
    const Outcome outcome = run(pathOf("python3"),
                                QStringList{QStringLiteral(VIGIL_INTEROP_TESTS "/run_zabbix.py"),
                                            integrations + QStringLiteral("/zabbix/vigil.yaml"),
                                            QString::number(agent.snmpPort())} +
                                    expected,
                                directory.path(), environment, zabbixMs);
    constexpr int skipped = 77;
    if (outcome.exitCode == skipped)
        GTEST_SKIP() << qPrintable(outcome.out);
    EXPECT_EQ(outcome.exitCode, 0) << qPrintable(outcome.out);
}

TEST_F(Interop, CollectdReadsSeveritiesAndValues)
{
    SKIP_WITHOUT("collectd");
    startAgent();
    publishHealth(1);
    QFile stored(integrations + QStringLiteral("/collectd/vigil.conf"));
    ASSERT_TRUE(stored.open(QIODevice::ReadOnly));
    QByteArray text = stored.readAll();
    text.replace("127.0.0.1:161", "127.0.0.1:" + QByteArray::number(agent.snmpPort()));
    text.replace("Interval 60", "Interval 1");
    QFile file(directory.filePath(QStringLiteral("collectd.conf")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const QByteArray folder = directory.path().toUtf8();
    file.write("BaseDir \"" + folder + "\"\nPIDFile \"" + folder +
               "/pid\"\nInterval 1\nLoadPlugin csv\n<Plugin csv>\n  DataDir \"" + folder +
               "/csv\"\n</Plugin>\n" + text);
    file.close();
    QProcess collectd;
    collectd.setProcessChannelMode(QProcess::MergedChannels);
    collectd.setProcessEnvironment(environment);
    collectd.start(pathOf("collectd"), {QStringLiteral("-f"), QStringLiteral("-C"), file.fileName()});
    ASSERT_TRUE(collectd.waitForStarted());
    const auto lastValue = [this](const QString& name) {
        const QDir values(directory.filePath(QStringLiteral("csv/localhost/snmp")));
        for (const QString& entry : values.entryList({name}, QDir::Files)) {
            QFile csv(values.filePath(entry));
            csv.open(QIODevice::ReadOnly);
            return csv.readAll().trimmed().split('\n').last().split(',').value(1).toDouble();
        }
        return -1.0;
    };
    EXPECT_TRUE(support::askUntil([&] {
        return lastValue(QStringLiteral("gauge-vigil_severity-app_disk-*")) == 2 &&
               lastValue(QStringLiteral("gauge-vigil_value-app_disk_u-*")) == 72.5;
    })) << collectd.readAll().constData();
    collectd.terminate();
    collectd.waitForFinished();
}
