// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/CommandLine.h"

#include <QCommandLineParser>
#include <QDir>

#include "agent/core/User.h"
#include "base/BuildInfo.h"

namespace agent {

namespace {

constexpr char snmpAddress[] = "udp:127.0.0.1:161"; // where snmpd serves by default
constexpr int longestSeconds = 365 * 86400;
constexpr int longestSetTimeoutMs = 60'000;
// snmpd drops a subagent after a second without a reply. An accepted SET settles for another 20 ms.
constexpr int subagentSetTimeoutMs = 979;
constexpr int mostConnections = 10'000;
constexpr int mostCells = 10'000'000;
constexpr int leastFrameBytes = 1024;
constexpr int leastMegabytes = 8;
constexpr int mostMegabytes = 1'000'000;

/// Of a service that is installed without --standalone: where managers look for SNMP.
constexpr char serviceAddress[] = "udp:161,tcp:161";

const Limits mostBytes; // the byte limits cannot be raised above their defaults

/// An option with a whole number as its value.
struct Number
{
    QCommandLineOption option;
    int least;
    int most;
    int& value; ///< where the number goes; holds the default until then
};

Number numberOption(const QString& name, const QString& unit, const QString& description, int least, int most,
                    int& value)
{
    return {QCommandLineOption(
                name,
                description + QStringLiteral(" From %1 to %2. Default: %3.").arg(least).arg(most).arg(value),
                unit),
            least, most, value};
}

/// Declares the options, with the defaults in their descriptions, and reads their values.
class Reader
{
public:
    explicit Reader(Options& options);

    Error read(const QStringList& arguments, QString& output);

private:
    Error readOptions();
    Error readTask();
    Error readServiceTask();
    Error readRole();
    Error readShow();
    Error readAgentx();
    Error readStandalone();
    Error readConfig();
    Error readSubtree();
    Error readListen();
    Error readHttp();
    Error readControl();
    Error readAddress(const QCommandLineOption& option, QHostAddress& host, quint16& port) const;
    Error readSetTimeout();
    Error readStaleAfter();
    Error readUsers();
    Error checkText();
    Error readNumber(const Number& number);
    QStringList serviceArguments() const;
    bool isTask(Options::Task task) const { return m_options.task == task; }

    bool isSet(const QCommandLineOption& option) const { return m_parser.isSet(option); }
    QString value(const QCommandLineOption& option) const { return m_parser.value(option); }

    Options& m_options; // first: the descriptions name the defaults
    QCommandLineParser m_parser;
    const QCommandLineOption m_help = m_parser.addHelpOption();
    const QCommandLineOption m_version = m_parser.addVersionOption();

    const QCommandLineOption m_agentx = QCommandLineOption(
        QStringLiteral("agentx"),
        m_options.canJoinMaster
            ? QStringLiteral("Join the snmpd whose AgentX socket is at <address>: a path or "
                             "tcp:host:port. Default: %1.")
                  .arg(m_options.agentxAddress)
            : QStringLiteral("Not available on this system: use --standalone."),
        QStringLiteral("address"));
    const QCommandLineOption m_standalone = QCommandLineOption(
        QStringLiteral("standalone"),
        QStringLiteral("Serve SNMP on <address> instead of joining snmpd, for example udp:127.0.0.1:1161. "
                       "Separate several addresses by commas. Prefer tcp: for large tables."),
        QStringLiteral("address"));
    const QCommandLineOption m_subtree = QCommandLineOption(
        QStringLiteral("subtree"),
        QStringLiteral("Serve only the objects at and below <oid>. It is written in numbers and lies at or "
                       "below %1. Default: %2.")
            .arg(toText(enterpriseRoot()), toText(m_options.subtree)),
        QStringLiteral("oid"));
    const QCommandLineOption m_config = QCommandLineOption(
        QStringLiteral("config"),
        QStringLiteral("With --standalone: read access control and notification receivers from <file>. It "
                       "has the directives of snmpd.conf (rocommunity, rouser, createUser, view ...), with "
                       "object identifiers in numbers. Without a file, this host may read with the "
                       "community \"public\", and no one may write."),
        QStringLiteral("file"));
    const QCommandLineOption m_checkConfig =
        QCommandLineOption(QStringLiteral("check-config"),
                           QStringLiteral("Check the file of --config and exit: with status 0 if "
                                          "it is correct, else with 1 and the wrong lines."));
    const QCommandLineOption m_installService = QCommandLineOption(
        QStringLiteral("install-service"),
        QStringLiteral("Windows: install the agent as a service with the other options of this command "
                       "line, and exit. Without --standalone it serves %1. Without --config a commented "
                       "configuration is made. Start it with: sc start vigil-agent.")
            .arg(QLatin1String(serviceAddress)));
    const QCommandLineOption m_uninstallService =
        QCommandLineOption(QStringLiteral("uninstall-service"),
                           QStringLiteral("Windows: stop the service, remove it, and exit. Its "
                                          "configuration and its state stay."));
    const QCommandLineOption m_service =
        QCommandLineOption(QStringLiteral("service"),
                           QStringLiteral("Windows: run as the service. --install-service adds this option "
                                          "to the service's command line."));
    const QCommandLineOption m_show = QCommandLineOption(
        QStringLiteral("show"),
        QStringLiteral(
            "Print the health checks and applications of the agent that runs on the first address of "
            "--standalone, or on %1, and exit: with status 1 if it does not answer.")
            .arg(QLatin1String(snmpAddress)));
    const QCommandLineOption m_community = QCommandLineOption(
        QStringLiteral("community"),
        QStringLiteral("With --show: ask with this SNMPv2c community. Default: %1.").arg(m_options.community),
        QStringLiteral("name"));
    const QCommandLineOption m_listen = QCommandLineOption(
        QStringLiteral("listen"),
        QStringLiteral("Accept applications on <host:port>, a loopback address. Port 0 picks a free port. "
                       "Default: %1:%2.")
            .arg(m_options.listenHost.toString())
            .arg(m_options.listenPort),
        QStringLiteral("host:port"));
    const QCommandLineOption m_http = QCommandLineOption(
        QStringLiteral("http"),
        QStringLiteral("Serve a page with all health checks, /metrics for Prometheus, /health and "
                       "/api/checks on <host:port>. Everyone who can reach the address may read, without a "
                       "password; use a loopback address such as 127.0.0.1. Port 0 picks a free port. "
                       "Without this option there is no HTTP."),
        QStringLiteral("host:port"));
    const QCommandLineOption m_control = QCommandLineOption(
        QStringLiteral("control"),
        platform::knowsLocalPeers()
            ? QStringLiteral(
                  "Let root and the agent's user control the agent with vigilctl, through the local "
                  "socket <path>. Without it, the file \"control\" in the directory of the "
                  "environment variable RUNTIME_DIRECTORY, as systemd sets it, or none.")
            : QStringLiteral("Not available on this system."),
        QStringLiteral("path"));
    const QCommandLineOption m_allowUsers = QCommandLineOption(
        QStringLiteral("allow-users"),
        QStringLiteral("Accept only applications of <users>: names or numbers, separated by commas. Without "
                       "this option every user of this host may publish."),
        QStringLiteral("users"));
    const Number m_setTimeout = numberOption(
        QStringLiteral("set-timeout"), QStringLiteral("ms"),
        QStringLiteral("Wait at most <ms> milliseconds for an application to accept or refuse a SET. "
                       "More than %1 needs --standalone.")
            .arg(subagentSetTimeoutMs),
        1, longestSetTimeoutMs, m_options.setTimeoutMs);
    const Number m_grace = numberOption(
        QStringLiteral("grace"), QStringLiteral("s"),
        QStringLiteral("Serve the last values of a lost application for <s> seconds, then show its health "
                       "checks as UNKNOWN. When it returns, it has the same time to publish its cells again; "
                       "then the missing ones are removed."),
        0, longestSeconds, m_options.graceSeconds);
    const Number m_forget = numberOption(
        QStringLiteral("forget"), QStringLiteral("s"),
        QStringLiteral("Remove the cells of a lost application after <s> seconds; 0 means never."), 0,
        longestSeconds, m_options.forgetSeconds);
    const QCommandLineOption m_staleAfter = QCommandLineOption(
        QStringLiteral("stale-after"),
        QStringLiteral("Show a health check as UNKNOWN when its application has not updated it for <s> "
                       "seconds; 0 means never. With \"auto\" the agent learns the rhythm of each check: "
                       "after ten regular updates, four times the longest interval is too long, and at least "
                       "30 seconds. From 0 to %1, or auto. Default: auto.")
            .arg(longestSeconds),
        QStringLiteral("s"));
    const Number m_maxConnections = numberOption(
        QStringLiteral("max-connections"), QStringLiteral("n"),
        QStringLiteral("Accept at most <n> applications at a time, at most seven eighths of them "
                       "of one user other than root."),
        1, mostConnections, m_options.limits.connections);
    const Number m_maxCells = numberOption(QStringLiteral("max-cells"), QStringLiteral("n"),
                                           QStringLiteral("Accept at most <n> cells from one application."),
                                           1, mostCells, m_options.limits.cells);
    const Number m_maxUserCells = numberOption(
        QStringLiteral("max-user-cells"), QStringLiteral("n"),
        QStringLiteral("Accept at most <n> cells from all applications of one user other than root."), 1,
        mostCells, m_options.limits.userCells);
    const Number m_maxMemory =
        numberOption(QStringLiteral("max-memory"), QStringLiteral("mb"),
                     QStringLiteral("Use at most <mb> megabytes for the cells, unfinished frames and waiting "
                                    "notifications of all applications. A user other than root has at most "
                                    "as much as remains free for others."),
                     leastMegabytes, mostMegabytes, m_options.limits.megabytes);
    const Number m_maxText = numberOption(QStringLiteral("max-text"), QStringLiteral("n"),
                                          QStringLiteral("Cut texts longer than <n> bytes. Behind snmpd "
                                                         "%1 is the most, and the default.")
                                              .arg(Limits::subagentTextBytes),
                                          1, mostBytes.textBytes, m_options.limits.textBytes);
    const Number m_maxFrame =
        numberOption(QStringLiteral("max-frame"), QStringLiteral("n"),
                     QStringLiteral("Disconnect an application that sends a frame longer than <n> bytes."),
                     leastFrameBytes, mostBytes.frameBytes, m_options.limits.frameBytes);
    const QCommandLineOption m_stateDirectory = QCommandLineOption(
        QStringLiteral("state-directory"),
        QStringLiteral("Keep lost health checks, the statuses managers know, and the SNMPv3 engine in <dir> "
                       "over a restart. Without it, the directory in the environment variable "
                       "STATE_DIRECTORY, as systemd sets it, or none."),
        QStringLiteral("dir"));
    const QCommandLineOption m_verbose =
        QCommandLineOption(QStringLiteral("verbose"),
                           QStringLiteral("Also log each connection, each cell and the steps of each SET."));
};

Reader::Reader(Options& options) : m_options(options)
{
    m_parser.setApplicationDescription(
        QStringLiteral("Serves the health of this host's applications to SNMP managers."));
    m_parser.addOptions({m_agentx,
                         m_standalone,
                         m_subtree,
                         m_config,
                         m_checkConfig,
                         m_installService,
                         m_uninstallService,
                         m_service,
                         m_show,
                         m_community,
                         m_listen,
                         m_http,
                         m_control,
                         m_allowUsers,
                         m_setTimeout.option,
                         m_grace.option,
                         m_forget.option,
                         m_staleAfter,
                         m_maxConnections.option,
                         m_maxCells.option,
                         m_maxUserCells.option,
                         m_maxMemory.option,
                         m_maxText.option,
                         m_maxFrame.option,
                         m_stateDirectory,
                         m_verbose});
}

Error Reader::read(const QStringList& arguments, QString& output)
{
    const bool isParsed = m_parser.parse(arguments);
    m_options.isService =
        isSet(m_service); // known even with a wrong option: the service manager must hear of it
    if (!isParsed)
        return Error(m_parser.errorText());
    if (isSet(m_help)) {
        output = m_parser.helpText();
        return {};
    }
    if (isSet(m_version)) {
        output = QStringLiteral("vigil-agent %1\n").arg(QLatin1String(base::buildInfo::version()));
        return {};
    }
    return readOptions();
}

Error Reader::readOptions()
{
    const QStringList stray = m_parser.positionalArguments();
    if (!stray.isEmpty())
        return Error(QStringLiteral("unexpected argument %1").arg(stray.constFirst()));
    m_options.isVerbose = isSet(m_verbose);
    if (isSet(m_stateDirectory))
        m_options.stateDirectory = value(m_stateDirectory);
    for (const auto readPart :
         {&Reader::readTask, &Reader::readRole, &Reader::readSubtree, &Reader::readListen, &Reader::readHttp,
          &Reader::readControl, &Reader::readUsers, &Reader::readSetTimeout, &Reader::readStaleAfter}) {
        if (Error error = (this->*readPart)())
            return error;
    }
    for (const Number* number : {&m_grace, &m_forget, &m_maxConnections, &m_maxCells, &m_maxUserCells,
                                 &m_maxMemory, &m_maxText, &m_maxFrame}) {
        if (Error error = readNumber(*number))
            return error;
    }
    if (isTask(Options::Task::InstallService))
        m_options.serviceArguments = serviceArguments();
    return checkText();
}

Error Reader::readTask()
{
    if (isSet(m_checkConfig))
        m_options.task = Options::Task::CheckConfig;
    if (isSet(m_show))
        m_options.task = Options::Task::Show;
    for (const QCommandLineOption* option : {&m_installService, &m_uninstallService, &m_service}) {
        if (isSet(*option) && !m_options.canBeService)
            return Error(QStringLiteral("--%1 is for Windows. Here systemd runs the agent: systemctl enable "
                                        "--now vigil-agent.socket vigil-agent")
                             .arg(option->names().constFirst()));
    }
    return readServiceTask();
}

Error Reader::readServiceTask()
{
    if (isSet(m_uninstallService)) {
        m_options.task = Options::Task::UninstallService;
        return m_parser.optionNames().size() == 1
                   ? Error()
                   : Error(QStringLiteral("--uninstall-service takes no other option"));
    }
    if (!isSet(m_installService))
        return {};
    if (isSet(m_checkConfig) || isSet(m_show) || isSet(m_service))
        return Error(
            QStringLiteral("--install-service, --check-config, --show and --service exclude each other"));
    m_options.task = Options::Task::InstallService;
    m_options.standaloneAddress = QLatin1String(serviceAddress);
    return {};
}

/// All options of this command line, for another one: the service runs in another folder.
QStringList Reader::serviceArguments() const
{
    QStringList arguments{QStringLiteral("--service")};
    if (!isSet(m_standalone))
        arguments << QStringLiteral("--standalone") << m_options.standaloneAddress;
    QStringList names = m_parser.optionNames();
    names.removeDuplicates();
    names.removeAll(m_installService.names().constFirst());
    for (const QString& name : names) {
        arguments << QStringLiteral("--") + name;
        const QString value = m_parser.value(name);
        const bool isPath = m_config.names().contains(name) || m_stateDirectory.names().contains(name);
        if (isPath)
            arguments << QDir::toNativeSeparators(QDir().absoluteFilePath(value));
        else if (!value.isEmpty())
            arguments << value;
    }
    return arguments;
}

Error Reader::readRole()
{
    if (isSet(m_standalone) && isSet(m_agentx))
        return Error(
            QStringLiteral("--standalone and --agentx exclude each other: serve SNMP here or join snmpd"));
    if (Error error = readAgentx())
        return error;
    if (Error error = readStandalone())
        return error;
    if (Error error = readConfig())
        return error;
    if (Error error = readShow())
        return error;
    const bool isServing = isTask(Options::Task::Serve);
    if (m_options.canJoinMaster || m_options.isStandalone() || !isServing)
        return {};
    return Error(QStringLiteral("--standalone is needed: on this system the agent cannot join a master"));
}

Error Reader::readAgentx()
{
    if (!isSet(m_agentx))
        return {};
    if (value(m_agentx).trimmed().isEmpty())
        return Error(QStringLiteral("--agentx: the address is empty"));
    if (!m_options.canJoinMaster)
        return Error(QStringLiteral("--agentx is not available on this system; use --standalone"));
    m_options.agentxAddress = value(m_agentx);
    return {};
}

Error Reader::readStandalone()
{
    if (!isSet(m_standalone))
        return {};
    const QStringList addresses = value(m_standalone).split(QLatin1Char(','));
    for (const QString& address : addresses) {
        if (address.trimmed().isEmpty())
            return Error(QStringLiteral("--standalone %1: an address is empty").arg(value(m_standalone)));
    }
    m_options.standaloneAddress = value(m_standalone);
    return {};
}

Error Reader::readConfig()
{
    const bool isCheck = isTask(Options::Task::CheckConfig);
    if (!isSet(m_config))
        return isCheck ? Error(QStringLiteral("--check-config: name the file with --config")) : Error();
    if (!m_options.isStandalone() && !isCheck)
        return Error(QStringLiteral(
            "--config needs --standalone; behind snmpd, snmpd's own configuration controls access"));
    if (value(m_config).isEmpty())
        return Error(QStringLiteral("--config: the file name is empty"));
    m_options.configFile = value(m_config);
    return {};
}

Error Reader::readShow()
{
    if (isSet(m_community) && !isTask(Options::Task::Show))
        return Error(QStringLiteral("--community needs --show; --config decides who may read"));
    if (isSet(m_community))
        m_options.community = value(m_community);
    m_options.showAddress = m_options.isStandalone()
                                ? m_options.standaloneAddress.section(QLatin1Char(','), 0, 0).trimmed()
                                : QString(QLatin1String(snmpAddress));
    return {};
}

Error Reader::readSubtree()
{
    if (!isSet(m_subtree))
        return {};
    const std::optional<ObjectId> subtree = fromFullText(value(m_subtree).toStdString());
    if (!subtree || !isInTree(enterpriseRoot(), *subtree) || subtree->size() > maxArcs)
        return Error(QStringLiteral("--subtree %1: expected an identifier in numbers, at or below %2")
                         .arg(value(m_subtree), toText(enterpriseRoot())));
    m_options.subtree = *subtree;
    return {};
}

QHostAddress toAddress(QString host)
{
    if (host.startsWith(QLatin1Char('[')) && host.endsWith(QLatin1Char(']')))
        host = host.mid(1, host.size() - 2);
    return host == QLatin1String("localhost") ? QHostAddress(QHostAddress::LocalHost) : QHostAddress(host);
}

Error Reader::readAddress(const QCommandLineOption& option, QHostAddress& host, quint16& port) const
{
    const QString name = option.names().constFirst();
    const QString text = value(option);
    const int colon = text.lastIndexOf(QLatin1Char(':'));
    bool isNumber = false;
    const ushort number = text.mid(colon + 1).toUShort(&isNumber);
    if (colon < 1 || !isNumber)
        return Error(
            QStringLiteral("--%1 %2: expected HOST:PORT with a port from 0 to 65535").arg(name, text));
    const QHostAddress address = toAddress(text.left(colon));
    if (address.isNull())
        return Error(
            QStringLiteral("--%1 %2: the host must be an address, for example 127.0.0.1").arg(name, text));
    host = address;
    port = number;
    return {};
}

Error Reader::readListen()
{
    if (!isSet(m_listen))
        return {};
    if (Error error = readAddress(m_listen, m_options.listenHost, m_options.listenPort))
        return error;
    if (m_options.listenHost.isLoopback())
        return {};
    return Error(QStringLiteral("--listen %1: applications connect from this host only; use a loopback "
                                "address such as 127.0.0.1")
                     .arg(value(m_listen)));
}

Error Reader::readHttp()
{
    return isSet(m_http) ? readAddress(m_http, m_options.httpHost, m_options.httpPort) : Error();
}

Error Reader::readControl()
{
    if (!isSet(m_control))
        return {};
    if (!platform::knowsLocalPeers())
        return Error(QStringLiteral("--control is not available on this system"));
    if (!value(m_control).startsWith(QLatin1Char('/')))
        return Error(QStringLiteral("--control %1: expected a path from the root").arg(value(m_control)));
    m_options.controlPath = value(m_control);
    return {};
}

Error Reader::readUsers()
{
    if (!isSet(m_allowUsers))
        return {};
    for (const QString& name : value(m_allowUsers).split(QLatin1Char(','))) {
        const User user = platform::userNamed(name.trimmed().toStdString());
        if (!user)
            return Error(QStringLiteral("--allow-users %1: there is no user \"%2\"")
                             .arg(value(m_allowUsers), name.trimmed()));
        m_options.limits.users.insert(*user);
    }
    return {};
}

Error Reader::readSetTimeout()
{
    if (Error error = readNumber(m_setTimeout))
        return error;
    if (!m_options.isStandalone() && m_options.setTimeoutMs > subagentSetTimeoutMs)
        return Error(QStringLiteral("--set-timeout %1: behind snmpd it must be below %2; snmpd drops a "
                                    "subagent after a second without a reply")
                         .arg(m_options.setTimeoutMs)
                         .arg(subagentSetTimeoutMs + 1));
    return {};
}

Error Reader::checkText()
{
    int& most = m_options.limits.textBytes;
    if (m_options.isStandalone() || most <= Limits::subagentTextBytes)
        return {};
    if (isSet(m_maxText.option))
        return Error(QStringLiteral("--max-text %1: behind snmpd it must not exceed %2, so that a text fits "
                                    "into a message to snmpd")
                         .arg(most)
                         .arg(Limits::subagentTextBytes));
    most = Limits::subagentTextBytes;
    return {};
}

Error Reader::readStaleAfter()
{
    const QString text = value(m_staleAfter);
    if (!isSet(m_staleAfter) || text == QLatin1String("auto"))
        return {};
    bool isNumber = false;
    const int seconds = text.toInt(&isNumber);
    if (!isNumber || seconds < 0 || seconds > longestSeconds)
        return Error(QStringLiteral("--stale-after %1: expected a number from 0 to %2, or auto")
                         .arg(text)
                         .arg(longestSeconds));
    m_options.staleAfterSeconds = seconds;
    return {};
}

Error Reader::readNumber(const Number& number)
{
    if (!isSet(number.option))
        return {};
    const QString text = value(number.option);
    bool isNumber = false;
    const int read = text.toInt(&isNumber);
    if (!isNumber || read < number.least || read > number.most)
        return Error(QStringLiteral("--%1 %2: expected a number from %3 to %4")
                         .arg(number.option.names().constFirst(), text)
                         .arg(number.least)
                         .arg(number.most));
    number.value = read;
    return {};
}

} // namespace

Error readCommandLine(const QStringList& arguments, Options& options, QString& output)
{
    return Reader(options).read(arguments, output);
}

} // namespace agent
