// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_VIGILSNMP_H
#define VIGIL_CLIENT_VIGILSNMP_H

#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <vigil/VigilSnmpInterface.h>

#include "client/ApplicationRunner.h"
#include "client/ClientQueue.h"
#include "client/Lifecycle.h"
#include "client/StoreMutex.h"
#include "platform/Platform.h"

class CallbackStore;
class Client;
class ClientThread;
class SnmpTableManager;

namespace base {
template <typename T>
class NeverDestroyed;
}

namespace vigil {

/// The service facade: owns the library's threads and passes calls on to the client thread.
///
/// Purpose: see VigilSnmpInterface. The rest of the library also gets the callback store and the tables here,
/// which all health checks share. Lifecycle has the states between init() and the end of the process.
///
/// Threads: any. init(), cleanup() and the exit handler wait for each other.
///
/// Ownership: the one object is never destroyed, because statics of the application may use it after the
/// library's own are gone. init() creates its members and cleanup() destroys them.
///
/// Failure: a thread that does not stop in time is left running, and the facade is out of use from then on:
/// every call does nothing. Checks and metrics still work, but publish nothing. If no thread,
/// descriptor or memory is left, init() takes everything back, and the next one tries again. With
/// VIGIL_SERVICE_PORT=off it does nothing.
class VigilSnmp final : public VigilSnmpInterface
{
public:
    static VigilSnmp& instance();

    void init(const std::string& name) override;
    void cleanup() override;
    void sendValue(const Oid& oid, const char* value, int useTraps) override;
    void sendValue(const Oid& oid, const std::string& value, int useTraps) override;
    void sendValue(const Oid& oid, int value, int useTraps) override;
    void unsetOid(const Oid& oid) override;
    void unsetOidTree(const Oid& oid) override;
    void registerValueChangedCallback(const Oid& oid, ValueChangedCallback* cb) override;
    void deregisterValueChangedCallback(ValueChangedCallback* cb) override;
    void deregisterValueChanged(const Oid& oid) override;
    void registerStateInfoCallback(StateInfoCallback* cb) override;
    void deregisterStateInfoCallback(StateInfoCallback* cb) override;

    /// For CallbackStoreLock: the lock and the store. The store is null unless the library runs.
    StoreMutex& storeMutex() { return m_storeMutex; }
    std::shared_ptr<CallbackStore> callbackStore() const { return m_callbackStore; }

    /// True in a forked child, too.
    bool isOutOfUse() const
    {
        return m_lifecycle.state() == Lifecycle::State::OutOfUse || platform::isForkedChild();
    }

    /// Expired unless the library runs.
    std::weak_ptr<SnmpTableManager> tableManager() const
    {
        const base::MutexLock lock(m_tableManagerMutex);
        return m_tableManager;
    }

private:
    friend class base::NeverDestroyed<VigilSnmp>;
    VigilSnmp() = default;
    ~VigilSnmp() = default;

    /// How long a stop waits for each of its steps, in milliseconds; negative means no limit.
    struct Limits
    {
        int clientMs;
        int storeMs;
        int runnerMs;
    };

    static void prepareExit();
    static void cleanupAtExit();

    bool isInUse() const;
    void setTableManager(std::shared_ptr<SnmpTableManager> manager);
    void start(const std::string& name);
    bool startClient();
    void giveUpStart(const char* reason);
    void logFailedStart(const char* reason);
    void pauseClient(const std::shared_ptr<ApplicationRunner::Pause>& pause);
    void stop(const Limits& limits);
    bool stopClient(int timeoutMs);
    bool runClientExit(Client* client, int timeoutMs);
    bool endClientThread();
    void muteCallbacks();
    bool releaseStore(int timeoutMs);
    bool releaseShared(int storeTimeoutMs);
    void abandonWithoutThreads();
    void abandon();

    void changeStore(const char* operation, const QString& logLine,
                     const std::function<void(CallbackStore&)>& change);

    Lifecycle m_lifecycle;
    ClientQueue m_clientQueue;
    ClientThread* m_clientThread = nullptr;
    base::Mutex m_startStopMutex; // held by init(), cleanup() and the exit handler
    mutable base::Mutex m_tableManagerMutex;
    std::shared_ptr<SnmpTableManager> m_tableManager VIGIL_GUARDED_BY(m_tableManagerMutex);
    std::shared_ptr<CallbackStore> m_callbackStore; // guarded by m_storeMutex
    StoreMutex m_storeMutex;
    std::unique_ptr<ApplicationRunner> m_runner;
    std::optional<platform::ForkWatch> m_forkWatch; // while the library runs
};

} // namespace vigil

#endif
