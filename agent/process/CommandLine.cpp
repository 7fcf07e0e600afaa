// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/CommandLine.h"

#include <QCommandLineParser>
#include <QDir>

#include <algorithm>

#include "agent/core/User.h"
#include "agent/process/DeclaredOptions.h"
#include "base/BuildInfo.h"

namespace agent {

namespace {

/// Reads the values of the declared options.
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
    Error readNumber(const DeclaredOptions::Number& number);
    QStringList serviceArguments() const;
    bool isTask(Options::Task task) const { return m_options.task == task; }

    bool isSet(const QCommandLineOption& option) const { return m_parser.isSet(option); }
    QString value(const QCommandLineOption& option) const { return m_parser.value(option); }

    Options& m_options;
    QCommandLineParser m_parser;
    const QCommandLineOption m_help = m_parser.addHelpOption();
    const QCommandLineOption m_version = m_parser.addVersionOption();

    const DeclaredOptions m_declared;
};

Reader::Reader(Options& options) : m_options(options), m_declared(options)
{
    m_parser.setApplicationDescription(
        QStringLiteral("Serves the health of this host's applications to SNMP managers."));
    m_parser.addOptions(m_declared.all());
}

Error Reader::read(const QStringList& arguments, QString& output)
{
    const bool isParsed = m_parser.parse(arguments);
    m_options.isService =
        isSet(m_declared.service); // known even with a wrong option: the service manager must hear of it
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
    m_options.isVerbose = isSet(m_declared.verbose);
    if (isSet(m_declared.stateDirectory))
        m_options.stateDirectory = value(m_declared.stateDirectory);
    for (const auto readPart :
         {&Reader::readTask, &Reader::readRole, &Reader::readSubtree, &Reader::readListen, &Reader::readHttp,
          &Reader::readControl, &Reader::readUsers, &Reader::readSetTimeout, &Reader::readStaleAfter}) {
        if (Error error = (this->*readPart)())
            return error;
    }
    for (const DeclaredOptions::Number* number :
         {&m_declared.grace, &m_declared.forget, &m_declared.maxConnections, &m_declared.maxCells,
          &m_declared.maxUserCells, &m_declared.maxMemory, &m_declared.maxText, &m_declared.maxFrame}) {
        if (Error error = readNumber(*number))
            return error;
    }
    if (isTask(Options::Task::InstallService))
        m_options.serviceArguments = serviceArguments();
    return checkText();
}

Error Reader::readTask()
{
    if (isSet(m_declared.checkConfig))
        m_options.task = Options::Task::CheckConfig;
    if (isSet(m_declared.show))
        m_options.task = Options::Task::Show;
    for (const QCommandLineOption* option :
         {&m_declared.installService, &m_declared.uninstallService, &m_declared.service}) {
        if (isSet(*option) && !m_options.canBeService)
            return Error(QStringLiteral("--%1 is for Windows. Here systemd runs the agent: systemctl enable "
                                        "--now vigil-agent.socket vigil-agent")
                             .arg(option->names().constFirst()));
    }
    const auto tasks = {&m_declared.installService, &m_declared.checkConfig, &m_declared.show,
                        &m_declared.service};
    if (std::count_if(tasks.begin(), tasks.end(), [this](const auto* option) { return isSet(*option); }) > 1)
        return Error(
            QStringLiteral("--install-service, --check-config, --show and --service exclude each other"));
    return readServiceTask();
}

Error Reader::readServiceTask()
{
    if (isSet(m_declared.uninstallService)) {
        m_options.task = Options::Task::UninstallService;
        return m_parser.optionNames().size() == 1
                   ? Error()
                   : Error(QStringLiteral("--uninstall-service takes no other option"));
    }
    if (!isSet(m_declared.installService))
        return {};
    m_options.task = Options::Task::InstallService;
    m_options.standaloneAddress = QLatin1String(DeclaredOptions::serviceAddress);
    return {};
}

/// All options of this command line, for another one: the service runs in another folder.
QStringList Reader::serviceArguments() const
{
    QStringList arguments{QStringLiteral("--service")};
    if (!isSet(m_declared.standalone))
        arguments << QStringLiteral("--standalone") << m_options.standaloneAddress;
    QStringList names = m_parser.optionNames();
    names.removeDuplicates();
    names.removeAll(m_declared.installService.names().constFirst());
    for (const QString& name : names) {
        arguments << QStringLiteral("--") + name;
        const QString value = m_parser.value(name);
        const bool isPath =
            m_declared.config.names().contains(name) || m_declared.stateDirectory.names().contains(name);
        if (isPath)
            arguments << QDir::toNativeSeparators(QDir().absoluteFilePath(value));
        else if (!value.isEmpty())
            arguments << value;
    }
    return arguments;
}

Error Reader::readRole()
{
    if (isSet(m_declared.standalone) && isSet(m_declared.agentx))
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
    if (!isSet(m_declared.agentx))
        return {};
    if (value(m_declared.agentx).trimmed().isEmpty())
        return Error(QStringLiteral("--agentx: the address is empty"));
    if (!m_options.canJoinMaster)
        return Error(QStringLiteral("--agentx is not available on this system; use --standalone"));
    m_options.agentxAddress = value(m_declared.agentx);
    return {};
}

Error Reader::readStandalone()
{
    if (!isSet(m_declared.standalone))
        return {};
    const QStringList addresses = value(m_declared.standalone).split(QLatin1Char(','));
    for (const QString& address : addresses) {
        if (address.trimmed().isEmpty())
            return Error(
                QStringLiteral("--standalone %1: an address is empty").arg(value(m_declared.standalone)));
    }
    m_options.standaloneAddress = value(m_declared.standalone);
    return {};
}

Error Reader::readConfig()
{
    const bool isCheck = isTask(Options::Task::CheckConfig);
    if (!isSet(m_declared.config))
        return isCheck ? Error(QStringLiteral("--check-config: name the file with --config")) : Error();
    if (!m_options.isStandalone() && !isCheck)
        return Error(QStringLiteral(
            "--config needs --standalone; behind snmpd, snmpd's own configuration controls access"));
    if (value(m_declared.config).isEmpty())
        return Error(QStringLiteral("--config: the file name is empty"));
    m_options.configFile = value(m_declared.config);
    return {};
}

Error Reader::readShow()
{
    if (isSet(m_declared.community) && !isTask(Options::Task::Show))
        return Error(QStringLiteral("--community needs --show; --config decides who may read"));
    if (isSet(m_declared.community))
        m_options.community = value(m_declared.community);
    m_options.showAddress = m_options.isStandalone()
                                ? m_options.standaloneAddress.section(QLatin1Char(','), 0, 0).trimmed()
                                : QString(QLatin1String(DeclaredOptions::snmpAddress));
    return {};
}

Error Reader::readSubtree()
{
    if (!isSet(m_declared.subtree))
        return {};
    const std::optional<ObjectId> subtree = fromFullText(value(m_declared.subtree).toStdString());
    if (!subtree || !isInTree(enterpriseRoot(), *subtree) || subtree->size() > maxArcs)
        return Error(QStringLiteral("--subtree %1: expected an identifier in numbers, at or below %2")
                         .arg(value(m_declared.subtree), toText(enterpriseRoot())));
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
    if (!isSet(m_declared.listen))
        return {};
    if (Error error = readAddress(m_declared.listen, m_options.listenHost, m_options.listenPort))
        return error;
    if (m_options.listenHost.isLoopback())
        return {};
    return Error(QStringLiteral("--listen %1: applications connect from this host only; use a loopback "
                                "address such as 127.0.0.1")
                     .arg(value(m_declared.listen)));
}

Error Reader::readHttp()
{
    return isSet(m_declared.http) ? readAddress(m_declared.http, m_options.httpHost, m_options.httpPort)
                                  : Error();
}

Error Reader::readControl()
{
    if (!isSet(m_declared.control))
        return {};
    if (!platform::knowsLocalPeers())
        return Error(QStringLiteral("--control is not available on this system"));
    if (!value(m_declared.control).startsWith(QLatin1Char('/')))
        return Error(
            QStringLiteral("--control %1: expected a path from the root").arg(value(m_declared.control)));
    m_options.controlPath = value(m_declared.control);
    return {};
}

Error Reader::readUsers()
{
    if (!isSet(m_declared.allowUsers))
        return {};
    for (const QString& name : value(m_declared.allowUsers).split(QLatin1Char(','))) {
        const User user = platform::userNamed(name.trimmed().toStdString());
        if (!user)
            return Error(QStringLiteral("--allow-users %1: there is no user \"%2\"")
                             .arg(value(m_declared.allowUsers), name.trimmed()));
        m_options.limits.users.insert(*user);
    }
    return {};
}

Error Reader::readSetTimeout()
{
    if (Error error = readNumber(m_declared.setTimeout))
        return error;
    if (!m_options.isStandalone() && m_options.setTimeoutMs > DeclaredOptions::subagentSetTimeoutMs)
        return Error(QStringLiteral("--set-timeout %1: behind snmpd it must be below %2; snmpd drops a "
                                    "subagent after a second without a reply")
                         .arg(m_options.setTimeoutMs)
                         .arg(DeclaredOptions::subagentSetTimeoutMs + 1));
    return {};
}

Error Reader::checkText()
{
    int& most = m_options.limits.textBytes;
    if (m_options.isStandalone() || most <= Limits::subagentTextBytes)
        return {};
    if (isSet(m_declared.maxText.option))
        return Error(QStringLiteral("--max-text %1: behind snmpd it must not exceed %2, so that a text fits "
                                    "into a message to snmpd")
                         .arg(most)
                         .arg(Limits::subagentTextBytes));
    most = Limits::subagentTextBytes;
    return {};
}

Error Reader::readStaleAfter()
{
    const QString text = value(m_declared.staleAfter);
    if (!isSet(m_declared.staleAfter) || text == QLatin1String("auto"))
        return {};
    bool isNumber = false;
    const int seconds = text.toInt(&isNumber);
    if (!isNumber || seconds < 0 || seconds > DeclaredOptions::longestSeconds)
        return Error(QStringLiteral("--stale-after %1: expected a number from 0 to %2, or auto")
                         .arg(text)
                         .arg(DeclaredOptions::longestSeconds));
    m_options.staleAfterSeconds = seconds;
    return {};
}

Error Reader::readNumber(const DeclaredOptions::Number& number)
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
