// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/VigilSnmp.h"

#include <QAbstractSocket>
#include <QDeadlineTimer>
#include <QString>
#include <QThread>

#include <cstdlib>
#include <utility>

#include "base/DebugOutput.h"
#include "base/Logging.h"
#include "base/NeverDestroyed.h"
#include "base/Printable.h"
#include "base/UntilMemory.h"
#include "client/CallbackRules.h"
#include "client/CallbackStore.h"
#include "client/CallbackStoreLock.h"
#include "client/Client.h"
#include "client/ClientThread.h"
#include "client/OidType.h"
#include "client/ServiceAddress.h"
#include "platform/Platform.h"
#include "snmp/SnmpTableManager.h"

namespace vigil {

namespace {

using Event = Lifecycle::Event;

constexpr int threadEndTimeoutMs = 5000;
constexpr int aliveCheckMs = 20;
constexpr int pauseTimeoutMs = 5000;
constexpr int maxPauseMs = 10000;

constexpr int noLimit = -1;

constexpr int descriptorsOfAStart = 16; // about twice as many as a start opens
constexpr const char* noThreadLeft = "The system has no thread left";

// Limits at process exit. A connect cannot be interrupted and takes up to 5 s.
constexpr int clientTimeoutAtExitMs = 6000;
constexpr int startStopTimeoutAtExitMs = 6000;
constexpr int drainTimeoutAtExitMs = 2000;
constexpr int storeTimeoutAtExitMs = 300;
constexpr int runnerTimeoutAtExitMs = 1000;

QString toText(const Oid& oid)
{
    return QString::fromStdString(oid.toStdString());
}

/// Queues the client's exit. done is released once it has run. The result expires when the call has run or Qt
/// has dropped it.
std::weak_ptr<void> queueExit(Client* client, const std::shared_ptr<base::Semaphore>& done)
{
    const auto life = std::make_shared<char>();
    ClientQueue::post(client, [client, done, life] {
        client->exit();
        done->release();
    });
    return life;
}

} // namespace

VigilSnmpInterface::VigilSnmpInterface() = default;

VigilSnmpInterface& VigilSnmpInterface::instance()
{
    return VigilSnmp::instance();
}

VigilSnmp& VigilSnmp::instance()
{
    // Never destroyed: statics of the application may release their checks after the library's statics are
    // gone.
    static base::NeverDestroyed<VigilSnmp> facade;
    return facade.get();
}

namespace {

/// Builds the facade while the library is loaded. On first use another thread might fork meanwhile, and the
/// child would wait for the facade forever.
const VigilSnmp* const builtAtLoad = &VigilSnmp::instance();

} // namespace

// --- Start

void VigilSnmp::init(const std::string& name)
{
    if (isOutOfUse() || CallbackStoreLock::isHeldByThisThread())
        return; // inside a callback the library runs, and a thread that stops it waits for the callback
    const platform::DelayedCancellation delay;
    const platform::ForkWatch watch; // before the lock, which a child would inherit
    const base::MutexLock lock(m_startStopMutex);
    try {
        start(name);
    } catch (const std::bad_alloc&) {
        if (m_lifecycle.state() == Lifecycle::State::Running)
            stop({noLimit, noLimit, noLimit});
        else if (m_lifecycle.state() == Lifecycle::State::Starting)
            giveUpStart("The process has no memory left");
    }
}

void VigilSnmp::start(const std::string& name)
{
    if (isServiceOff())
        return prepareExit();
    if (!m_lifecycle.on(Event::Init))
        return;
    m_forkWatch.emplace();
    platform::fillStandardDescriptors();
    if (!platform::hasDescriptors(descriptorsOfAStart))
        return giveUpStart("The process has no file descriptor left");
    // Qt keeps data in the process's threads, so its libraries must stay loaded when this one is unloaded.
    platform::pinModule(&QObject::staticMetaObject);
    platform::pinModule(&QAbstractSocket::staticMetaObject);
    m_runner = ApplicationRunner::start([this](const auto& pause) { pauseClient(pause); });
    if (!m_runner)
        return giveUpStart(noThreadLeft);
    OidType::enroll();
    base::writeLog(QStringLiteral("[VigilSnmp::init] Initializing %1.")
                       .arg(base::printable(QString::fromUtf8(name.c_str()))));
    if (!startClient())
        return giveUpStart(noThreadLeft);
    {
        // The client may be connected already. It sends its cache; no callback can be registered yet.
        const CallbackStoreLock store;
        m_callbackStore = std::make_shared<CallbackStore>();
    }
    setTableManager(std::make_shared<SnmpTableManager>());
    prepareExit();
}

/// Other threads may be reading the pointer. The earlier tables are destroyed without the lock.
void VigilSnmp::setTableManager(std::shared_ptr<SnmpTableManager> manager)
{
    const base::MutexLock lock(m_tableManagerMutex);
    m_tableManager.swap(manager);
}

/// The exit handler runs before the statics made here are destroyed.
void VigilSnmp::prepareExit()
{
    base::prepareDebugOutput();
    std::atexit(&VigilSnmp::cleanupAtExit);
}

/// Takes back all of init(), so that the next one can try again. Without a runner the log is not open yet.
void VigilSnmp::giveUpStart(const char* reason)
{
    base::untilMemory([&] { logFailedStart(reason); });
    if (m_runner) {
        m_runner->stop(noLimit);
        m_runner.reset();
    }
    m_forkWatch.reset();
    m_lifecycle.on(Event::NoThread);
}

void VigilSnmp::logFailedStart(const char* reason)
{
    if (!m_runner)
        base::startLogging();
    base::writeLog(QStringLiteral("___ERROR___ [VigilSnmp::init] %1. Nothing is published until all health "
                                  "checks are destroyed and a new one is made.")
                       .arg(QLatin1String(reason)));
    if (!m_runner)
        base::stopLogging();
}

/// False if the system has no thread left.
bool VigilSnmp::startClient()
{
    auto thread = std::make_unique<ClientThread>();
    auto client = std::make_unique<Client>();
    QObject::connect(thread.get(), SIGNAL(started()), client.get(), SLOT(init()));
    QObject::connect(client.get(), SIGNAL(finished()), client.get(), SLOT(deleteLater()));
    client->moveToThread(thread.get());
    thread->moveToThread(m_runner->thread());
    m_clientThread = thread.release();
    m_clientQueue.open(client.release());
    if (m_clientThread->launch()) {
        m_lifecycle.on(Event::Started);
        return true;
    }
    delete m_clientQueue.close();
    delete std::exchange(m_clientThread, nullptr);
    return false;
}

/// Returns once the client thread is paused, or on time-out if a callback or a connect blocks it. Calls
/// queued before run first; later ones stay pending.
void VigilSnmp::pauseClient(const std::shared_ptr<ApplicationRunner::Pause>& pause)
{
    const auto wait = [pause] {
        pause->begun.release();
        pause->over.tryAcquire(1, maxPauseMs);
    };
    if (m_clientQueue.post(wait))
        pause->begun.tryAcquire(1, pauseTimeoutMs);
}

// --- Stop

void VigilSnmp::cleanup()
{
    if (isOutOfUse() || refuseInsideCallback("VigilSnmp::cleanup"))
        return;
    const platform::DelayedCancellation delay;
    const platform::ForkWatch watch;
    const base::MutexLock lock(m_startStopMutex);
    stop({noLimit, noLimit, noLimit});
}

/// Runs when the library is unloaded or the process ends. It may run on any thread, even inside a callback,
/// while other threads are gone or stuck. It must always return.
void VigilSnmp::cleanupAtExit()
{
    if (platform::isForkedChild())
        return;
    const platform::ForkWatch watch;
    VigilSnmp& facade = instance();
    // Another thread may be starting or stopping the library. On the client thread it would wait for us.
    if (facade.m_startStopMutex.tryLock(ClientThread::isCurrent() ? 0 : startStopTimeoutAtExitMs)) {
        facade.muteCallbacks();
        facade.stop({clientTimeoutAtExitMs, storeTimeoutAtExitMs, runnerTimeoutAtExitMs});
        if (facade.m_lifecycle.state() == Lifecycle::State::Stopped)
            OidType::takeBack();
        facade.m_lifecycle.on(Event::ProcessEnds);
        facade.m_startStopMutex.unlock();
    }
    facade.m_lifecycle.on(Event::ProcessEnds);
    base::closeDebugOutput();
}

void VigilSnmp::stop(const Limits& limits)
{
    if (!m_lifecycle.on(Event::Stop))
        return;
    if (m_runner->isGone()) // like all other threads; they may have held any lock
        return abandonWithoutThreads();
    ApplicationRunner::followHost();
    base::writeLog(QStringLiteral("[VigilSnmp::cleanup] Cleanup."));
    const bool clientStopped = stopClient(limits.clientMs) && releaseShared(limits.storeMs);
    const bool runnerStopped = m_runner->stop(limits.runnerMs);
    if (!runnerStopped)
        base::stopLogging(); // usually the runner's last step
    if (!clientStopped || !runnerStopped)
        return abandon();
    m_runner.reset();
    m_forkWatch.reset();
    m_lifecycle.on(Event::ThreadsEnded);
}

bool VigilSnmp::stopClient(int timeoutMs)
{
    Client* client = nullptr;
    base::untilMemory([&] { client = m_clientQueue.close(); });
    return client && runClientExit(client, timeoutMs) && endClientThread();
}

/// Waits until the client has closed its connection. The exit is the last call in the client's queue, so all
/// values published before are sent first.
bool VigilSnmp::runClientExit(Client* client, int timeoutMs)
{
    if (ClientThread::isCurrent()) { // the process ends inside a callback; its event loop never runs again
        client->exit();
        return false;
    }
    std::shared_ptr<base::Semaphore> done;
    std::weak_ptr<void> call;
    const auto requestExit = [&] {
        if (!done)
            done = std::make_shared<base::Semaphore>();
        call = queueExit(client, done);
    };
    if (!base::untilMemory(requestExit))
        return false;
    const QDeadlineTimer deadline(timeoutMs); // never expires if negative
    const QDeadlineTimer drained(timeoutMs < 0 ? noLimit : drainTimeoutAtExitMs);
    while (!done->tryAcquire(1, aliveCheckMs)) {
        // Qt drops calls while the process has no application object, after the host's and before the
        // runner's.
        if (call.expired() && done->available() == 0 && !base::untilMemory(requestExit))
            return false;
        if (drained.hasExpired())
            m_clientThread->requestInterruption();
        if (deadline.hasExpired() || m_runner->isGone())
            return false;
    }
    return true;
}

/// A running QThread must not be deleted: Qt would end the process.
///
/// While a library is being unloaded, no thread of a Windows process can end. Qt's wait() first checks
/// whether the thread has finished its work. So wait in short steps and let it check again.
bool VigilSnmp::endClientThread()
{
    m_clientThread->quit();
    const QDeadlineTimer deadline(threadEndTimeoutMs);
    while (!m_clientThread->wait(aliveCheckMs)) {
        if (deadline.hasExpired())
            return false;
    }
    delete m_clientThread;
    m_clientThread = nullptr;
    return true;
}

/// The application's statics, handlers among them, may be destroyed by now, so callbacks are muted. A replay
/// holds the lock; it is given up.
void VigilSnmp::muteCallbacks()
{
    if (m_lifecycle.state() != Lifecycle::State::Running || m_runner->isGone() ||
        m_storeMutex.isHeldByThisThread() || releaseStore(storeTimeoutAtExitMs))
        return;
    m_clientThread->requestInterruption();
    releaseStore(storeTimeoutAtExitMs);
}

/// False if another thread keeps the lock.
bool VigilSnmp::releaseStore(int timeoutMs)
{
    if (!m_storeMutex.tryLock(timeoutMs))
        return false;
    m_callbackStore.reset();
    m_storeMutex.unlock();
    return true;
}

bool VigilSnmp::releaseShared(int storeTimeoutMs)
{
    setTableManager(nullptr);
    return releaseStore(storeTimeoutMs);
}

/// Writes the log's last line and touches nothing else. In a forked child the log belongs to the parent.
void VigilSnmp::abandonWithoutThreads()
{
    if (m_runner->isOfThisProcess())
        base::stopLoggingWithoutOtherThreads();
    abandon();
}

/// Leaks all objects that a running thread may still use.
void VigilSnmp::abandon()
{
    m_lifecycle.on(Event::ThreadLost);
    static_cast<void>(m_runner.release());
}

// --- Publishing

/// Qt drops what is posted while the process has no application object.
bool VigilSnmp::isInUse() const
{
    if (isOutOfUse())
        return false;
    ApplicationRunner::followHost();
    return true;
}

void VigilSnmp::sendValue(const Oid& oid, const char* value, int useTraps)
{
    sendValue(oid, std::string(value), useTraps);
}

void VigilSnmp::sendValue(const Oid& oid, const std::string& value, int useTraps)
{
    const platform::DelayedCancellation delay;
    if (isInUse())
        m_clientQueue.sendValue(oid, QString::fromStdString(value), useTraps == 1);
}

void VigilSnmp::sendValue(const Oid& oid, int value, int useTraps)
{
    const platform::DelayedCancellation delay;
    if (isInUse())
        m_clientQueue.sendValue(oid, value, useTraps == 1);
}

void VigilSnmp::unsetOid(const Oid& oid)
{
    const platform::DelayedCancellation delay;
    if (isInUse())
        m_clientQueue.unsetOid(oid);
}

void VigilSnmp::unsetOidTree(const Oid& oid)
{
    const platform::DelayedCancellation delay;
    if (!isInUse() || !m_clientQueue.isOpen())
        return;
    base::writeLog(QStringLiteral("Unset tree %1.").arg(toText(oid)));
    m_clientQueue.unsetOidTree(oid);
}

// --- Registration

void VigilSnmp::registerValueChangedCallback(const Oid& oid, ValueChangedCallback* cb)
{
    changeStore("registerValueChangedCallback",
                QStringLiteral("Register value changed callback %1.").arg(base::toHexString(cb)),
                [&](CallbackStore& store) { store.registerValueChangedCallback(oid, cb); });
}

void VigilSnmp::deregisterValueChangedCallback(ValueChangedCallback* cb)
{
    changeStore("deregisterValueChangedCallback",
                QStringLiteral("Deregister value changed callback %1.").arg(base::toHexString(cb)),
                [&](CallbackStore& store) { store.deregisterValueChangedCallback(cb); });
}

void VigilSnmp::deregisterValueChanged(const Oid& oid)
{
    changeStore("deregisterValueChanged",
                QStringLiteral("Deregister value changed for OID %1.").arg(toText(oid)),
                [&](CallbackStore& store) { store.deregisterValueChanged(oid); });
}

void VigilSnmp::registerStateInfoCallback(StateInfoCallback* cb)
{
    changeStore("registerStateInfoCallback",
                QStringLiteral("Register state info callback %1").arg(base::toHexString(cb)),
                [&](CallbackStore& store) { store.registerStateInfoCallback(cb); });
}

void VigilSnmp::deregisterStateInfoCallback(StateInfoCallback* cb)
{
    changeStore("deregisterStateInfoCallback",
                QStringLiteral("Deregister state info callback %1").arg(base::toHexString(cb)),
                [&](CallbackStore& store) { store.deregisterStateInfoCallback(cb); });
}

void VigilSnmp::changeStore(const char* operation, const QString& logLine,
                            const std::function<void(CallbackStore&)>& change)
{
    if (isOutOfUse() || refuseInsideCallback(operation))
        return;
    const CallbackStoreLock store;
    if (!store)
        return;
    base::writeLog(logLine);
    change(*store.operator->());
}

} // namespace vigil
