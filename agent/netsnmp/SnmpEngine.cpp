// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/SnmpEngine.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstring>

#include "agent/netsnmp/ConfigurationFile.h"
#include "agent/netsnmp/ManagerSocket.h"
#include "agent/netsnmp/NetSnmp.h"
#include "agent/netsnmp/NotificationReceiverFilter.h"
#include "agent/netsnmp/OwnFiles.h"
#include "agent/netsnmp/RefusedDirectives.h"
#include "agent/netsnmp/SnmpListener.h"
#include "agent/netsnmp/UserDirective.h"

// Parts of the agent library; no installed header declares them.
extern "C" {
void init_vacm_conf(void);
void init_system_mib(void);
void init_snmp_mib(void);
}

namespace agent {

namespace {

constexpr char applicationName[] = "vigil-agent";

// The access without a configuration file: this host may read what the agent serves.
const char* const defaultAccess[] = {
    "view served included .1.3.6.1.2.1.1", "view served included .1.3.6.1.2.1.11",
    "rocommunity public 127.0.0.0/8 -V served", "rocommunity6 public ::1/128 -V served"};

/// Net-SNMP calls it when it would read its own configuration files.
int readOurConfiguration(int, int, void*, void* configFile)
{
    const NotificationReceiverFilter filter;
    checkUserDirectives();
    refuseDirectives();
    const char* path = static_cast<const char*>(configFile);
    if (!path) {
        netsnmp_config(
            QByteArray("view served included .").append(toText(enterpriseRoot()).toLatin1()).data());
        for (const char* directive : defaultAccess)
            netsnmp_config(QByteArray(directive).data());
    } else {
        read_config_with_type(path, applicationName);
    }
    return SNMPERR_SUCCESS;
}

/// Collects what Net-SNMP says about lines of configuration files, for as long as it lives.
class WrongLines
{
public:
    WrongLines()
    {
        snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, &WrongLines::collect, this);
    }
    ~WrongLines()
    {
        snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, &WrongLines::collect, this, 1);
    }
    WrongLines(const WrongLines&) = delete;
    WrongLines& operator=(const WrongLines&) = delete;

    /// For example "line 3: Warning: Unknown token: rocomunity"; empty if there is none.
    const QString& first() const { return m_first; }

private:
    static int collect(int, int, void* data, void* self)
    {
        const auto* message = static_cast<const snmp_log_message*>(data);
        const QString text = QString::fromUtf8(message->msg).trimmed();
        const int line = text.indexOf(QLatin1String("line "));
        QString& first = static_cast<WrongLines*>(self)->m_first;
        if (message->priority <= LOG_WARNING && line >= 0 && first.isEmpty())
            first = text.mid(line).chopped(text.endsWith(QLatin1Char('.')) ? 1 : 0);
        return 0;
    }

    QString m_first;
};

} // namespace

SnmpEngine::SnmpEngine(const Settings& settings, Clock& clock)
    : m_settings(settings), m_identity(settings.engineFile), m_receivers(clock), m_replayGuard(clock)
{
    if (isStandalone())
        return;
    m_session = std::make_unique<AgentxSession>(m_settings.agentxAddress, clock);
    QObject::connect(m_session.get(), &AgentxSession::descriptorsChanged, &m_eventLoop,
                     &NetSnmpEventLoop::watchAgain);
    m_link = std::make_unique<MasterLink>(*m_session, clock, m_settings.agentxAddress, m_settings.subtree);
}

SnmpEngine::~SnmpEngine()
{
    m_eventLoop.stop();
    m_replayGuard.stop();
    if (!isStandalone()) {
        m_link->stop();
        m_session->prepareToEnd();
    }
    if (!m_isRunning)
        return;
    snmp_shutdown(applicationName);
    shutdown_agent();
}

QString SnmpEngine::defaultAgentxAddress()
{
    return AgentxSession::defaultAddress();
}

Error SnmpEngine::checkConfiguration() const
{
    const QString path = m_settings.configFile;
    if (path.isEmpty())
        return {};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Error(
            QStringLiteral("cannot read the configuration file %1: %2. Check that it exists and that "
                           "this user may read it")
                .arg(path, file.errorString()));
    if (configurationFile::nameForC(QFileInfo(path).absoluteFilePath()).isEmpty())
        return Error(QStringLiteral("cannot read the configuration file %1: its name has letters that this "
                                    "system's older programs cannot write. Give it another name")
                         .arg(path));
    return configurationFile::checkRights(path);
}

Error SnmpEngine::initialise()
{
    if (Error error = checkConfiguration())
        return error;
    if (!m_directory.isValid())
        return Error(QStringLiteral("cannot create a temporary directory: %1. Free some space, or set TMPDIR")
                         .arg(m_directory.errorString()));
    NetSnmpEventLoop::bridgeLog();
    keepToOwnFiles(QFile::encodeName(m_directory.path()));
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE, isStandalone() ? 0 : 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_DONT_LOG_TCPWRAPPERS_CONNECTS, 1);
    add_to_init_list(QByteArray("!smux").data()); // it would listen on a port of its own
    if (init_agent(applicationName) != 0)
        return Error(QStringLiteral("Net-SNMP cannot be initialised; its message above says why"));
    if (isStandalone()) {
        init_system_mib(); // behind snmpd, these two are snmpd's
        init_snmp_mib();
        m_identity.load();
        m_receivers.takeOver();
        takeConfiguration();
        m_replayGuard.start();
    } else {
        m_session->initialise();
        m_link->start();
    }
    return {};
}

void SnmpEngine::takeConfiguration()
{
    const QByteArray path = configurationFile::nameForC(QFileInfo(m_settings.configFile).absoluteFilePath());
    char* argument = m_settings.configFile.isEmpty() ? nullptr : strdup(path.constData());
    snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_PRE_READ_CONFIG, &readOurConfiguration,
                           argument); // Net-SNMP frees it
    init_vacm_conf();
}

Error SnmpEngine::start()
{
    m_isRunning = true;
    init_snmp(applicationName);
    if (isStandalone()) {
        m_identity.store();
        if (Error error = listen())
            return error;
    }
    m_eventLoop.start();
    return {};
}

Error SnmpEngine::check()
{
    if (Error error = initialise())
        return error;
    WrongLines wrong;
    m_isRunning = true;
    init_snmp(applicationName);
    if (wrong.first().isEmpty())
        return {};
    return Error(
        QStringLiteral("the configuration file %1 is wrong: %2. --check-config shows all wrong lines")
            .arg(m_settings.configFile, wrong.first()));
}

Error SnmpEngine::checkReloadable() const
{
    if (!m_settings.configFile.isEmpty())
        return {};
    return Error(
        QStringLiteral("there is no configuration file to read again: %1")
            .arg(isStandalone()
                     ? QStringLiteral("the agent was started without --config")
                     : QStringLiteral("behind snmpd, access and notifications are configured there")));
}

void SnmpEngine::reload()
{
    update_config();
}

QString SnmpEngine::statusText() const
{
    return m_link ? m_link->statusText()
                  : QStringLiteral("serving SNMP on %1").arg(m_settings.standaloneAddress);
}

void SnmpEngine::setStatusListener(const std::function<void(const QString&)>& listener)
{
    listener(statusText());
    if (m_link)
        QObject::connect(m_link.get(), &MasterLink::statusChanged, m_link.get(),
                         [this, listener] { listener(statusText()); });
}

Error SnmpEngine::listen()
{
    netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_PORTS, "none");
    const QStringList addresses = m_settings.standaloneAddress.split(QLatin1Char(','));
    if (init_master_agent() != 0)
        return Error(QStringLiteral("Net-SNMP cannot be initialised; its message above says why"));
    const auto failed = std::find_if_not(addresses.begin(), addresses.end(), &snmpListener::listen);
    if (failed == addresses.end())
        return {};
    QString reason = managerSocket::reasonFor(failed->trimmed());
    if (reason.isEmpty())
        reason =
            QStringLiteral("the address is in use, is not one of this host's, or needs privileges (a port "
                           "below 1024)");
    return Error(QStringLiteral("cannot serve on %1: %2").arg(m_settings.standaloneAddress, reason));
}

} // namespace agent
