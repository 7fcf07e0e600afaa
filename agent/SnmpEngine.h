#ifndef VIGIL_AGENT_SNMPENGINE_H
#define VIGIL_AGENT_SNMPENGINE_H

#include <QObject>
#include <QSocketNotifier>
#include <QString>
#include <QTemporaryDir>
#include <QTimer>

#include <functional>
#include <vector>

namespace agent {

/// Runs the Net-SNMP agent library in Qt's event loop. All glue between the two is here: configuration,
/// descriptors, time-outs and alarms, the log.
///
/// Purpose: nothing outside the given configuration is read and nothing is left behind on disk, so that the
/// agent does the same on every host.
///
/// Threads: Net-SNMP is not safe for threads; everything stays on the thread of the event loop.
/// Ownership: Net-SNMP's state is global, so there can be one engine in a process.
/// Failure: start() says in text why the agent cannot serve.
class SnmpEngine : public QObject
{
    Q_OBJECT

public:
    struct Settings
    {
        QString address;    ///< listening addresses, comma-separated
        QString configFile; ///< empty: the built-in read-only access from this host
    };

    explicit SnmpEngine(const Settings& settings);
    ~SnmpEngine() override;

    /// Reads the configuration. Returns what is wrong, or an empty text.
    QString initialise();

    /// Opens the addresses. Returns what is wrong, or an empty text. Handlers are registered before it.
    QString listen();

    /// While paused says true no request is read. Net-SNMP would queue it behind the waiting SET in any case;
    /// left in the kernel, it cannot lose the TCP session that its answer needs.
    void setPaused(std::function<bool()> paused) { m_paused = std::move(paused); }

private:
    QString configurationProblem() const;
    void prepareToWait();
    void watch(const std::vector<int>& descriptors);
    void unwatchAll();
    void handleReadable(int descriptor);
    void handleTimeout();

    const Settings m_settings;
    QTemporaryDir m_directory;
    std::function<bool()> m_paused = [] { return false; };
    std::vector<QSocketNotifier*> m_notifiers; // children of this
    QTimer m_timer;
    bool m_isInitialised = false;
};

} // namespace agent

#endif
