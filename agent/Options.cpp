#include "Options.h"

#include <QCommandLineParser>

#include "base/BuildInfo.h"

namespace agent {

namespace {

struct CommandLine
{
    QCommandLineParser parser;
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption standalone{
        QStringLiteral("standalone"),
        QStringLiteral("Serve SNMP on <address>, for example udp:127.0.0.1:1161, or a list of addresses "
                       "separated by commas; tcp: suits large tables."),
        QStringLiteral("address")};
    const QCommandLineOption config{
        QStringLiteral("config"),
        QStringLiteral("Take access control from <file>, in Net-SNMP's own directives (rocommunity, rouser, "
                       "createUser, view ...) with object identifiers in numbers. Without it the community "
                       "\"public\" may read from this host, and nothing may be written."),
        QStringLiteral("file")};
    const QCommandLineOption listen{
        QStringLiteral("listen"),
        QStringLiteral("Accept applications on <host:port>, a loopback address. The default is "
                       "127.0.0.1:43125; port 0 takes any free one."),
        QStringLiteral("host:port"), QStringLiteral("127.0.0.1:43125")};
    const QCommandLineOption setTimeout{
        QStringLiteral("set-timeout"),
        QStringLiteral("Wait at most <ms> milliseconds (1 to 60000) for an application's verdict on a SET. "
                       "The default is 900."),
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
        parser.addOptions({standalone, config, listen, setTimeout, grace, forget, staleAfter, maxConnections,
                           maxCells, maxText, maxFrame, verbose});
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

QString parseAddress(const CommandLine& line, Options& options)
{
    options.standaloneAddress = line.parser.value(line.standalone);
    if (!line.parser.isSet(line.standalone))
        return QStringLiteral("--standalone ADDRESS is required, for example "
                              "--standalone udp:127.0.0.1:1161");
    const QStringList addresses = options.standaloneAddress.split(QLatin1Char(','));
    for (const QString& address : addresses) {
        if (address.trimmed().isEmpty())
            return QStringLiteral("--standalone %1: an address is empty").arg(options.standaloneAddress);
    }
    return QString();
}

QString readValues(const CommandLine& line, Options& options)
{
    const QStringList stray = line.parser.positionalArguments();
    if (!stray.isEmpty())
        return QStringLiteral("unexpected argument %1").arg(stray.constFirst());
    options.isVerbose = line.parser.isSet(line.verbose);
    options.configFile = line.parser.value(line.config);
    if (line.parser.isSet(line.config) && options.configFile.isEmpty())
        return QStringLiteral("--config: the file name is empty");
    QString problem = parseAddress(line, options);
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
