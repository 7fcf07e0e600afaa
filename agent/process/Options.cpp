// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/Options.h"

#include <QCommandLineParser>

#include "agent/netsnmp/NetSnmp.h"
#include "base/BuildInfo.h"

namespace agent {

namespace {

QString defaultListenAddress()
{
    return QStringLiteral("%1:%2").arg(QLatin1String(base::defaultServiceHost)).arg(base::defaultServicePort);
}

struct CommandLine
{
    QCommandLineParser parser;
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption standalone{
        QStringLiteral("standalone"),
        QStringLiteral("Serve SNMP on <address> instead of joining snmpd, for example udp:127.0.0.1:1161, or "
                       "a list of addresses separated by commas; tcp: suits large tables."),
        QStringLiteral("address")};
    const QCommandLineOption agentx{
        QStringLiteral("agentx"),
        QStringLiteral("Join the snmpd that has its AgentX socket at <address>, a path or tcp:host:port. The "
                       "default is " NETSNMP_AGENTX_SOCKET "."),
        QStringLiteral("address")};
    const QCommandLineOption subtree{
        QStringLiteral("subtree"),
        QStringLiteral("Serve what lies at and below <oid> alone, in numbers. The default is "
                       "%1; anything narrower lies below it.")
            .arg(toText(enterpriseRoot())),
        QStringLiteral("oid")};
    const QCommandLineOption config{
        QStringLiteral("config"),
        QStringLiteral("With --standalone: take access control from <file>, in Net-SNMP's own directives "
                       "(rocommunity, rouser, "
                       "createUser, view ...) with object identifiers in numbers. Without it the community "
                       "\"public\" may read from this host, and nothing may be written."),
        QStringLiteral("file")};
    const QCommandLineOption listen{
        QStringLiteral("listen"),
        QStringLiteral("Accept applications on <host:port>, a loopback address. The default is "
                       "%1; port 0 takes any free one.")
            .arg(defaultListenAddress()),
        QStringLiteral("host:port"), defaultListenAddress()};
    const QCommandLineOption setTimeout{
        QStringLiteral("set-timeout"),
        QStringLiteral("Wait at most <ms> milliseconds (1 to 999, with --standalone to 60000) for an "
                       "application's verdict on a SET. The default is 900."),
        QStringLiteral("ms"), QStringLiteral("900")};
    const QCommandLineOption grace{
        QStringLiteral("grace"),
        QStringLiteral(
            "Let the health checks of a lost connection read UNKNOWN after <s> seconds. What its "
            "application does not publish again goes as long after its return. The default is 10."),
        QStringLiteral("s"), QStringLiteral("10")};
    const QCommandLineOption forget{
        QStringLiteral("forget"),
        QStringLiteral("Remove what a lost connection has left behind after <s> seconds, 0 for never. The "
                       "default is 86400, a day."),
        QStringLiteral("s"), QStringLiteral("86400")};
    const QCommandLineOption staleAfter{
        QStringLiteral("stale-after"),
        QStringLiteral(
            "Let a health check read UNKNOWN that its application has not updated for <s> seconds. "
            "The default is 0, never."),
        QStringLiteral("s"), QStringLiteral("0")};
    const QCommandLineOption maxConnections{
        QStringLiteral("max-connections"),
        QStringLiteral("Turn applications away beyond <n> at one time (1 to 10000). The default is 256."),
        QStringLiteral("n"), QStringLiteral("256")};
    const QCommandLineOption maxCells{
        QStringLiteral("max-cells"),
        QStringLiteral("Refuse values beyond <n> cells of one application. The default is 100000."),
        QStringLiteral("n"), QStringLiteral("100000")};
    const QCommandLineOption maxText{
        QStringLiteral("max-text"),
        QStringLiteral("Refuse texts of more than <n> bytes. The default, and the most that SNMP carries, is "
                       "65535."),
        QStringLiteral("n"), QStringLiteral("65535")};
    const QCommandLineOption maxFrame{
        QStringLiteral("max-frame"),
        QStringLiteral(
            "Disconnect an application that sends a frame of more than <n> bytes. The default, and "
            "the most, is 67108864 (64 MiB)."),
        QStringLiteral("n"), QStringLiteral("67108864")};
    const QCommandLineOption verbose{QStringLiteral("verbose"),
                                     QStringLiteral("Also log connections, cells and SETs one by one.")};

    CommandLine()
    {
        parser.setApplicationDescription(
            QStringLiteral("Serves the health that applications on this host publish to SNMP managers."));
        parser.addOptions({agentx, standalone, subtree, config, listen, setTimeout, grace, forget, staleAfter,
                           maxConnections, maxCells, maxText, maxFrame, verbose});
    }
};

QString parseListen(const QString& value, Options& options)
{
    const int colon = value.lastIndexOf(QLatin1Char(':'));
    QString host = value.left(colon);
    if (host.startsWith(QLatin1Char('[')) && host.endsWith(QLatin1Char(']')))
        host = host.mid(1, host.size() - 2);
    bool isNumber = false;
    const ushort port = value.mid(colon + 1).toUShort(&isNumber);
    if (colon < 1 || !isNumber)
        return QStringLiteral("--listen %1: expected HOST:PORT with a port from 0 to 65535").arg(value);

    const QHostAddress address =
        host == QLatin1String("localhost") ? QHostAddress(QHostAddress::LocalHost) : QHostAddress(host);
    if (address.isNull())
        return QStringLiteral("--listen %1: the host must be an address, for example 127.0.0.1").arg(value);
    if (!address.isLoopback())
        return QStringLiteral("--listen %1: applications are accepted from this host alone; "
                              "use a loopback address such as 127.0.0.1")
            .arg(value);
    options.listenHost = address;
    options.listenPort = port;
    return QString();
}

QString parseSetTimeout(const QString& value, Options& options)
{
    bool isNumber = false;
    const int milliseconds = value.toInt(&isNumber);
    if (!isNumber || milliseconds < 1 || milliseconds > 60000)
        return QStringLiteral("--set-timeout %1: expected milliseconds from 1 to 60000").arg(value);
    if (!options.isStandalone() && milliseconds >= 1000)
        return QStringLiteral(
                   "--set-timeout %1: behind snmpd it must stay below 1000, since snmpd gives up a "
                   "subagent that has not answered within a second")
            .arg(value);
    options.setTimeoutMs = milliseconds;
    return QString();
}

/// What is wrong with a number that has bounds, or an empty text.
QString readNumber(const CommandLine& line, const QCommandLineOption& option, int least, int most,
                   int& number)
{
    const QString value = line.parser.value(option);
    bool isNumber = false;
    const int read = value.toInt(&isNumber);
    if (!isNumber || read < least || read > most)
        return QStringLiteral("--%1 %2: expected a number from %3 to %4")
            .arg(option.names().constFirst(), value)
            .arg(least)
            .arg(most);
    number = read;
    return QString();
}

QString parseTimes(const CommandLine& line, Options& options)
{
    constexpr int longest = 365 * 86400;
    QString problem = readNumber(line, line.grace, 0, longest, options.graceSeconds);
    if (problem.isEmpty())
        problem = readNumber(line, line.forget, 0, longest, options.forgetSeconds);
    if (problem.isEmpty())
        problem = readNumber(line, line.staleAfter, 0, longest, options.staleAfterSeconds);
    return problem;
}

QString parseLimits(const CommandLine& line, Limits& limits)
{
    constexpr int leastFrame = 1024;
    const Limits most;
    QString problem = readNumber(line, line.maxConnections, 1, 10'000, limits.connections);
    if (problem.isEmpty())
        problem = readNumber(line, line.maxCells, 1, 10'000'000, limits.cells);
    if (problem.isEmpty())
        problem = readNumber(line, line.maxText, 1, most.textBytes, limits.textBytes);
    if (problem.isEmpty())
        problem = readNumber(line, line.maxFrame, leastFrame, most.frameBytes, limits.frameBytes);
    return problem;
}

QString parseStandalone(const QString& value, Options& options)
{
    const QStringList addresses = value.split(QLatin1Char(','));
    for (const QString& address : addresses) {
        if (address.trimmed().isEmpty())
            return QStringLiteral("--standalone %1: an address is empty").arg(value);
    }
    options.standaloneAddress = value;
    return QString();
}

QString parseRole(const CommandLine& line, Options& options)
{
    const bool isStandalone = line.parser.isSet(line.standalone);
    if (isStandalone && line.parser.isSet(line.agentx))
        return QStringLiteral("--standalone and --agentx exclude each other: serve SNMP here or join snmpd");
    options.agentxAddress = line.parser.value(line.agentx);
    if (line.parser.isSet(line.agentx) && options.agentxAddress.trimmed().isEmpty())
        return QStringLiteral("--agentx: the address is empty");
    options.configFile = line.parser.value(line.config);
    if (line.parser.isSet(line.config) && !isStandalone)
        return QStringLiteral("--config goes with --standalone; behind snmpd, access is what snmpd's own "
                              "configuration says");
    if (line.parser.isSet(line.config) && options.configFile.isEmpty())
        return QStringLiteral("--config: the file name is empty");
    return isStandalone ? parseStandalone(line.parser.value(line.standalone), options) : QString();
}

QString parseSubtree(const CommandLine& line, Options& options)
{
    if (!line.parser.isSet(line.subtree))
        return QString();
    const QString value = line.parser.value(line.subtree);
    const std::optional<ObjectId> subtree = fromFullText(value.toStdString());
    if (!subtree || !isInTree(enterpriseRoot(), *subtree) || subtree->size() > maxArcs)
        return QStringLiteral("--subtree %1: expected numbers between dots, %2 or something below it")
            .arg(value, toText(enterpriseRoot()));
    options.subtree = *subtree;
    return QString();
}

QString readValues(const CommandLine& line, Options& options)
{
    const QStringList stray = line.parser.positionalArguments();
    if (!stray.isEmpty())
        return QStringLiteral("unexpected argument %1").arg(stray.constFirst());
    options.isVerbose = line.parser.isSet(line.verbose);
    QString problem = parseRole(line, options);
    if (problem.isEmpty())
        problem = parseSubtree(line, options);
    if (problem.isEmpty())
        problem = parseListen(line.parser.value(line.listen), options);
    if (problem.isEmpty())
        problem = parseSetTimeout(line.parser.value(line.setTimeout), options);
    if (problem.isEmpty())
        problem = parseTimes(line, options);
    if (problem.isEmpty())
        problem = parseLimits(line, options.limits);
    return problem;
}

} // namespace

Options::Action Options::parse(const QStringList& arguments, Options& options, QString& text)
{
    CommandLine line;
    if (!line.parser.parse(arguments)) {
        text = line.parser.errorText();
        return Action::Fail;
    }
    if (line.parser.isSet(line.help)) {
        text = line.parser.helpText();
        return Action::PrintText;
    }
    if (line.parser.isSet(line.version)) {
        text = QStringLiteral("vigil-agent %1\n").arg(QLatin1String(base::buildInfo::version()));
        return Action::PrintText;
    }
    text = readValues(line, options);
    return text.isEmpty() ? Action::Run : Action::Fail;
}

} // namespace agent
