// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/NetSnmpEventLoop.h"

#include <QAbstractEventDispatcher>
#include <QDeadlineTimer>

#include <algorithm>

#include "agent/core/Log.h"
#include "agent/netsnmp/ManagerSocket.h"
#include "agent/netsnmp/NetSnmp.h"

namespace agent {

namespace {

/// A manager's walk is a chain of requests, each sent soon after the last answer.
constexpr long nextRequestUs = 1000;

/// After this time everything else has its turn.
constexpr int maxBurstMs = 10;

/// A set of descriptors as for select(), the only form Net-SNMP knows.
class DescriptorSet
{
public:
    DescriptorSet() { netsnmp_large_fd_set_init(&m_set, FD_SETSIZE); }
    ~DescriptorSet() { netsnmp_large_fd_set_cleanup(&m_set); }
    DescriptorSet(const DescriptorSet&) = delete;
    DescriptorSet& operator=(const DescriptorSet&) = delete;

    netsnmp_large_fd_set* get() { return &m_set; }
    std::vector<int> list(int count) { return managerSocket::listOf(m_set, count); }

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

} // namespace

NetSnmpEventLoop::NetSnmpEventLoop()
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &NetSnmpEventLoop::handleTimeout);
}

NetSnmpEventLoop::~NetSnmpEventLoop()
{
    stop();
}

void NetSnmpEventLoop::bridgeLog()
{
    snmp_disable_log();
    snmp_enable_calllog();
    snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_LOGGING, &writeNetSnmpLog, nullptr);
}

void NetSnmpEventLoop::start()
{
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            &NetSnmpEventLoop::prepareToWait);
}

void NetSnmpEventLoop::stop()
{
    QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance();
    if (dispatcher)
        dispatcher->disconnect(this);
    m_timer.stop();
    unwatchAll();
}

// Asks Net-SNMP before every wait: sessions come and go, and a new one may reuse an old descriptor.
void NetSnmpEventLoop::prepareToWait()
{
    if (m_paused()) {
        unwatchAll();
        m_timer.stop();
        return;
    }
    DescriptorSet wanted;
    int count = 0;
    int isUnlimited = 1;
    timeval limit = {};
    snmp_select_info2(&count, wanted.get(), &limit, &isUnlimited);

    watch(wanted.list(count));
    if (isUnlimited)
        m_timer.stop();
    else
        m_timer.start(static_cast<int>(limit.tv_sec * 1000 + (limit.tv_usec + 999) / 1000));
}

void NetSnmpEventLoop::watch(const std::vector<int>& descriptors)
{
    const bool isUnchanged = std::equal(
        m_notifiers.begin(), m_notifiers.end(), descriptors.begin(), descriptors.end(),
        [](const QSocketNotifier* notifier, int descriptor) { return notifier->socket() == descriptor; });
    if (isUnchanged)
        return;
    unwatchAll();
    for (const int descriptor : descriptors) {
        auto* notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, this);
        connect(notifier, &QSocketNotifier::activated, this, [this] { handleReadable(); });
        m_notifiers.push_back(notifier);
    }
}

void NetSnmpEventLoop::unwatchAll()
{
    for (QSocketNotifier* notifier : m_notifiers) {
        notifier->setEnabled(false);
        notifier->deleteLater(); // its own signal may be running
    }
    m_notifiers.clear();
}

/// Serves requests until none follows soon. It asks the system what is readable: an earlier call may have
/// read what Qt has seen, and a read of nothing would end the session.
void NetSnmpEventLoop::handleReadable()
{
    const QDeadlineTimer burstEnd(maxBurstMs);
    long waitUs = 0;
    while (!m_paused() && !burstEnd.hasExpired() && serveReadable(waitUs))
        waitUs = nextRequestUs;
    // At once, so a descriptor closed just now is not polled again. Nor is one that stays unread in a pause:
    // on Windows Qt would report it again and again, and run no timer meanwhile.
    prepareToWait();
}

/// Waits on Net-SNMP's descriptors alone: Qt would poll those of all applications again for each request.
/// False if nothing is readable in time.
bool NetSnmpEventLoop::serveReadable(long waitUs)
{
    DescriptorSet descriptors;
    int count = 0;
    int isUnlimited = 1;
    timeval alarm = {};
    snmp_select_info2(&count, descriptors.get(), &alarm, &isUnlimited);
    timeval limit = {0, waitUs};
    if (netsnmp_large_fd_set_select(count, descriptors.get(), nullptr, nullptr, &limit) <= 0)
        return false;
    snmp_read2(descriptors.get());
    netsnmp_check_outstanding_agent_requests();
    return true;
}

void NetSnmpEventLoop::handleTimeout()
{
    if (m_paused())
        return;
    snmp_timeout();
    run_alarms();
    netsnmp_check_outstanding_agent_requests();
}

} // namespace agent
