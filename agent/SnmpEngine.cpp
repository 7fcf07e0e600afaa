#include "SnmpEngine.h"

#include <QAbstractEventDispatcher>
#include <QByteArray>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstring>

#include <syslog.h>

#include "Log.h"
#include "NetSnmp.h"

// Part of the agent library, which declares it in no header that is installed.
extern "C" void init_vacm_conf(void);

namespace agent {

namespace {

constexpr char applicationName[] = "vigil-agent";

// Without a configuration file: reading from this host, below the enterprise's root.
const char* const defaultAccess[] = {"rocommunity public 127.0.0.0/8 .1.3.6.1.4.1.32473",
                                     "rocommunity6 public ::1/128 .1.3.6.1.4.1.32473"};

/// The set of descriptors that select() would be given; Net-SNMP knows no other way to name them.
class DescriptorSet
{
public:
    DescriptorSet() { netsnmp_large_fd_set_init(&m_set, FD_SETSIZE); }
    ~DescriptorSet() { netsnmp_large_fd_set_cleanup(&m_set); }
    DescriptorSet(const DescriptorSet&) = delete;
    DescriptorSet& operator=(const DescriptorSet&) = delete;

    netsnmp_large_fd_set* get() { return &m_set; }
    void insert(int descriptor) { netsnmp_large_fd_setfd(descriptor, &m_set); }
    bool contains(int descriptor) { return netsnmp_large_fd_is_set(descriptor, &m_set); }

private:
    netsnmp_large_fd_set m_set;
};

QString pendingLine; // Net-SNMP logs some lines in pieces

int writeNetSnmpLog(int, int, void* data, void*)
{
    const auto* message = static_cast<const snmp_log_message*>(data);
    pendingLine += QString::fromUtf8(message->msg);
    int end = 0;
    while ((end = pendingLine.indexOf(QLatin1Char('\n'))) >= 0) {
        const QString line = QStringLiteral("Net-SNMP: %1").arg(pendingLine.left(end));
        pendingLine.remove(0, end + 1);
        if (message->priority <= LOG_ERR)
            log::error(line);
        else if (message->priority == LOG_WARNING)
            log::warning(line);
        else if (message->priority <= LOG_INFO)
            log::detail([&line]() -> const QString& { return line; });
    }
    return 0;
}

void bridgeLog()
{
    snmp_disable_log();
    snmp_enable_calllog();
    snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, &writeNetSnmpLog, nullptr);
}

/// Net-SNMP has no switch for every file that it looks for or leaves behind; directory takes the rest.
void keepToItself(const QByteArray& directory)
{
    for (const int setting : {NETSNMP_DS_LIB_PERSISTENT_DIR, NETSNMP_DS_LIB_CONFIGURATION_DIR})
        netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, setting, directory.constData());
    for (const int setting : {NETSNMP_DS_LIB_DONT_READ_CONFIGS, NETSNMP_DS_LIB_DONT_LOAD_HOST_FILES,
                              NETSNMP_DS_LIB_DONT_PERSIST_STATE, NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD,
                              NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE, NETSNMP_DS_LIB_ALARM_DONT_USE_SIG})
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, setting, 1);
    // The agent prints no names; the modules of the host would only be read to complain about those that it
    // lacks.
    qputenv("MIBS", "");
    qputenv("MIBDIRS", "");
}

/// Net-SNMP calls it when it would read its own configuration files.
int readOurConfiguration(int, int, void*, void* configFile)
{
    const char* path = static_cast<const char*>(configFile);
    if (!path) {
        for (const char* directive : defaultAccess)
            netsnmp_config(QByteArray(directive).data());
    } else {
        read_config_with_type(path, applicationName);
    }
    return SNMPERR_SUCCESS;
}

} // namespace

SnmpEngine::SnmpEngine(const Settings& settings) : m_settings(settings)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &SnmpEngine::handleTimeout);
}

SnmpEngine::~SnmpEngine()
{
    unwatchAll();
    if (!m_isInitialised)
        return;
    snmp_shutdown(applicationName);
    shutdown_agent();
}

QString SnmpEngine::configurationProblem() const
{
    QFile file(m_settings.configFile);
    if (!m_settings.configFile.isEmpty() && !file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot read the configuration file %1: %2")
            .arg(m_settings.configFile, file.errorString());
    if (!m_directory.isValid())
        return QStringLiteral("cannot create a temporary directory: %1").arg(m_directory.errorString());
    return QString();
}

QString SnmpEngine::initialise()
{
    QString problem = configurationProblem();
    if (!problem.isEmpty())
        return problem;
    bridgeLog();
    keepToItself(QFile::encodeName(m_directory.path()));
    const QByteArray path = QFile::encodeName(QFileInfo(m_settings.configFile).absoluteFilePath());
    char* argument = m_settings.configFile.isEmpty() ? nullptr : strdup(path.constData());
    snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_PRE_READ_CONFIG, &readOurConfiguration,
                           argument); // which Net-SNMP frees
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE, 0);
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_DONT_LOG_TCPWRAPPERS_CONNECTS, 1);
    add_to_init_list(QByteArray("!smux").data()); // it would listen on a port that nobody asked for
    if (init_agent(applicationName) != 0)
        return QStringLiteral("Net-SNMP cannot be initialised");
    init_vacm_conf();
    init_snmp(applicationName);
    m_isInitialised = true;
    return QString();
}

QString SnmpEngine::listen()
{
    netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_PORTS,
                          m_settings.address.toLocal8Bit().constData());
    if (init_master_agent() != 0)
        return QStringLiteral(
                   "cannot serve on %1: the address is in use, is not one of this host's, or needs "
                   "privileges (a port below 1024)")
            .arg(m_settings.address);
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            &SnmpEngine::prepareToWait);
    return QString();
}

// Asked for anew before every wait: sessions come and go, and a new one may have an old one's number.
void SnmpEngine::prepareToWait()
{
    DescriptorSet wanted;
    int count = 0;
    int isUnlimited = 1;
    timeval limit = {};
    snmp_select_info2(&count, wanted.get(), &limit, &isUnlimited);

    std::vector<int> descriptors;
    for (int descriptor = 0; descriptor < count && !m_paused(); ++descriptor) {
        if (wanted.contains(descriptor))
            descriptors.push_back(descriptor);
    }
    watch(descriptors);
    if (isUnlimited)
        m_timer.stop();
    else
        m_timer.start(static_cast<int>(limit.tv_sec * 1000 + (limit.tv_usec + 999) / 1000));
}

void SnmpEngine::watch(const std::vector<int>& descriptors)
{
    const bool isUnchanged = std::equal(
        m_notifiers.begin(), m_notifiers.end(), descriptors.begin(), descriptors.end(),
        [](const QSocketNotifier* notifier, int descriptor) { return notifier->socket() == descriptor; });
    if (isUnchanged)
        return;
    unwatchAll();
    for (const int descriptor : descriptors) {
        auto* notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, this);
        connect(notifier, &QSocketNotifier::activated, this,
                [this, descriptor] { handleReadable(descriptor); });
        m_notifiers.push_back(notifier);
    }
}

void SnmpEngine::unwatchAll()
{
    for (QSocketNotifier* notifier : m_notifiers) {
        notifier->setEnabled(false);
        notifier->deleteLater(); // this may be its own signal
    }
    m_notifiers.clear();
}

void SnmpEngine::handleReadable(int descriptor)
{
    if (m_paused())
        return;
    DescriptorSet readable;
    readable.insert(descriptor);
    snmp_read2(readable.get());
    netsnmp_check_outstanding_agent_requests();
    prepareToWait(); // at once: a descriptor that has just been closed must not be polled again
}

void SnmpEngine::handleTimeout()
{
    snmp_timeout();
    run_alarms();
    netsnmp_check_outstanding_agent_requests();
}

} // namespace agent
