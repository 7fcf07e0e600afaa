// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/VigilSnmp.h"

#include <QAbstractSocket>
#include <QDeadlineTimer>
#include <QMetaObject>
#include <QString>
#include <QThread>

#include <cstdlib>

#include "base/Logging.h"
#include "base/NeverDestroyed.h"
#include "client/CallbackStore.h"
#include "client/CallbackStoreLock.h"
#include "client/Client.h"
#include "client/ClientThread.h"
#include "platform/Platform.h"
#include "snmp/SnmpTableManager.h"

namespace vigil {

namespace {

constexpr int threadEndTimeoutMs = 5000;
constexpr int aliveCheckMs = 20;
constexpr int pauseTimeoutMs = 5000;
constexpr int maxPauseMs = 10000;

constexpr int noLimit = -1;

// At the end of the process waiting has limits. An attempt to connect, which cannot be interrupted, takes up
// to 5 s.
constexpr int clientTimeoutAtExitMs = 6000;
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
    // Statics of the application may be destroyed after those of the library and still release their checks,
    // so this object must never be.
    static base::NeverDestroyed<VigilSnmp> facade;
    return facade.get();
}

// --- Start

void VigilSnmp::init(const std::string& name)
{
    if (m_initialised || m_outOfUse)
        return;
    // Qt leaves traces in threads of the process, so its libraries have to stay when this one is unloaded.
    platform::pinModule(&QObject::staticMetaObject);
    platform::pinModule(&QAbstractSocket::staticMetaObject);
    m_runner = ApplicationRunner::start([this](const auto& pause) { pauseClient(pause); });
    if (!m_runner)
        return;
    m_oidTypeId = qRegisterMetaType<Oid>("Oid");
    base::writeLog(QStringLiteral("[VigilSnmp::init] Initializing %1.").arg(QString::fromUtf8(name.c_str())));
    startClient();
    {
        // The client may be connected by now. It sends its cache all the same; there is nobody to notify yet.
        const CallbackStoreLock lock;
        m_callbackStore = std::make_shared<CallbackStore>();
    }
    m_tableManager = std::make_shared<SnmpTableManager>();
    std::atexit(&VigilSnmp::cleanupAtExit);
}

void VigilSnmp::startClient()
{
    m_clientThread = new ClientThread;
    m_clientThread->moveToThread(m_runner->thread());
    auto* client = new Client;
    client->moveToThread(m_clientThread);
    QObject::connect(m_clientThread, SIGNAL(started()), client, SLOT(init()));
    QObject::connect(client, SIGNAL(finished()), client, SLOT(deleteLater()));
    m_clientQueue.open(client);
    m_initialised = true;
    m_clientThread->start(QThread::InheritPriority);
}

/// Returns when the client rests, or will not come to it: a callback or an attempt to connect takes its time.
/// Calls that were put into its queue before are dealt with, later ones wait there.
void VigilSnmp::pauseClient(const std::shared_ptr<ApplicationRunner::Pause>& pause)
{
    const auto rest = [pause] {
        pause->begun.release();
        pause->over.tryAcquire(1, maxPauseMs);
    };
    if (m_clientQueue.post(rest))
        pause->begun.tryAcquire(1, pauseTimeoutMs);
}

// --- Stop

void VigilSnmp::cleanup()
{
    if (!CallbackStoreLock::refuseInsideCallback("VigilSnmp::cleanup"))
        stop({noLimit, noLimit, noLimit});
}

/// Runs when the library is unloaded or the process ends. Then it may be on any thread, even inside a
/// callback, and others may be gone or stuck: it must come back whatever it finds.
void VigilSnmp::cleanupAtExit()
{
    VigilSnmp& facade = instance();
    facade.muteCallbacks();
    facade.stop({clientTimeoutAtExitMs, storeTimeoutAtExitMs, runnerTimeoutAtExitMs});
    facade.m_outOfUse = true;
}

void VigilSnmp::stop(const Limits& limits)
{
    if (!m_initialised)
        return;
    m_initialised = false;
    if (m_runner->isGone()) // and with it every other thread, with any lock they held
        return abandonWithoutThreads();
    base::writeLog(QStringLiteral("[VigilSnmp::cleanup] Cleanup."));
    const bool clientStopped = stopClient(limits.clientMs) && releaseShared(limits.storeMs);
    const bool runnerStopped = m_runner->stop(limits.runnerMs);
    if (!runnerStopped)
        base::stopLogging(); // which the runner would have done
    if (!clientStopped || !runnerStopped)
        return abandon();
    m_runner.reset();
    QMetaType::unregisterType(m_oidTypeId); // it points to code that goes when the library is unloaded
}

bool VigilSnmp::stopClient(int timeoutMs)
{
    return runClientExit(m_clientQueue.close(), timeoutMs) && endClientThread(timeoutMs);
}

/// Waits until the client has closed its connection. The exit is one more call in the client's queue, so
/// everything that was published before goes out first.
bool VigilSnmp::runClientExit(Client* client, int timeoutMs)
{
    if (ClientThread::isCurrent()) { // the process ends from inside a callback; nobody returns to the
                                     // client's loop
        client->exit();
        return false;
    }
    const auto done = std::make_shared<base::Semaphore>();
    std::weak_ptr<void> call = queueExit(client, done);
    const QDeadlineTimer deadline(timeoutMs); // negative: never
    const QDeadlineTimer drained(timeoutMs < 0 ? noLimit : drainTimeoutAtExitMs);
    while (!done->tryAcquire(1, aliveCheckMs)) {
        // Qt drops calls that come up while the process has no application object: between the host's and the
        // one that takes its place.
        if (call.expired() && done->available() == 0)
            call = queueExit(client, done);
        if (drained.hasExpired())
            m_clientThread->requestInterruption();
        if (deadline.hasExpired() || m_runner->isGone())
            return false;
    }
    return true;
}

/// A QThread that still runs must not be deleted: Qt would end the process. With a limit for the client,
/// which is when the library may be unloaded, the waiting is done in short steps: each asks Qt first whether
/// the thread is done with its work, and while a Windows process unloads a library that is all that can be
/// had.
bool VigilSnmp::endClientThread(int clientTimeoutMs)
{
    m_clientThread->quit();
    const unsigned long stepMs = clientTimeoutMs < 0 ? threadEndTimeoutMs : aliveCheckMs;
    const QDeadlineTimer deadline(threadEndTimeoutMs);
    while (!m_clientThread->wait(stepMs)) {
        if (deadline.hasExpired())
            return false;
    }
    delete m_clientThread;
    m_clientThread = nullptr;
    return true;
}

/// Statics of the application, handlers among them, may have been destroyed before this library's exit
/// handler runs, so nobody is called any more. A replay holds the lock; it is given up then.
void VigilSnmp::muteCallbacks()
{
    if (!m_initialised || m_runner->isGone() || m_storeMutex.isHeldByThisThread() ||
        releaseStore(storeTimeoutAtExitMs))
        return;
    m_clientThread->requestInterruption();
    releaseStore(storeTimeoutAtExitMs);
}

/// False when somebody will not let go of the store.
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
    m_tableManager.reset();
    return releaseStore(storeTimeoutMs);
}

/// Touches nothing but the log, which must not lack its last line, and that only if the file is not the one
/// of a parent process.
void VigilSnmp::abandonWithoutThreads()
{
    if (m_runner->isOfThisProcess())
        base::stopLoggingWithoutOtherThreads();
    abandon();
}

/// Leaves behind what a thread that could not be stopped may still use.
void VigilSnmp::abandon()
{
    m_outOfUse = true;
    static_cast<void>(m_runner.release());
}

// --- Publishing

void VigilSnmp::sendValue(const Oid& oid, const char* value, int useTraps)
{
    sendValue(oid, std::string(value), useTraps);
}

void VigilSnmp::sendValue(const Oid& oid, const std::string& value, int useTraps)
{
    m_clientQueue.sendValue(oid, QString::fromStdString(value), useTraps == 1);
}

void VigilSnmp::sendValue(const Oid& oid, int value, int useTraps)
{
    m_clientQueue.sendValue(oid, value, useTraps == 1);
}

void VigilSnmp::unsetOid(const Oid& oid)
{
    m_clientQueue.unsetOid(oid);
}

void VigilSnmp::unsetOidTree(const Oid& oid)
{
    if (!m_clientQueue.isOpen())
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
    if (CallbackStoreLock::refuseInsideCallback(operation))
        return;
    const CallbackStoreLock store;
    if (!store)
        return;
    base::writeLog(logLine);
    change(*store.operator->());
}

} // namespace vigil
