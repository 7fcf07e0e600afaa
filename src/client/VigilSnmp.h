// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_VIGILSNMP_H
#define VIGIL_CLIENT_VIGILSNMP_H

#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include <vigil/VigilSnmpInterface.h>

#include "client/ApplicationRunner.h"
#include "client/ClientQueue.h"
#include "client/StoreMutex.h"

class CallbackStore;
class Client;
class ClientThread;
class SnmpTableManager;

namespace base {
template <typename T>
class NeverDestroyed;
}

namespace vigil {

/// The service facade: owns the library's threads and what lives in them, and hands calls over to the client
/// thread.
///
/// Purpose: see VigilSnmpInterface. For the rest of the library it also keeps the callback store with its
/// lock, and the tables that all health checks share.
///
/// Threads: publishing and registration from any thread; init(), cleanup() and cleanupAtExit() from one at a
/// time.
///
/// Ownership: the one object is never destroyed, since application statics may use it after the library's own
/// are gone. What it owns comes with init() and goes with cleanup().
///
/// Failure: a thread that does not stop in time is left behind, and the facade stays out of use from then on.
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

    /// For CallbackStoreLock: the lock, and what it guards. The store is null outside init() and cleanup().
    StoreMutex& storeMutex() { return m_storeMutex; }
    std::shared_ptr<CallbackStore> callbackStore() const { return m_callbackStore; }

    /// True when the process is ending, or a thread could not be stopped: then nothing of the facade is left
    /// to use.
    bool isOutOfUse() const { return m_outOfUse; }

    /// Expired outside init() and cleanup().
    std::weak_ptr<SnmpTableManager> tableManager() const { return m_tableManager; }

private:
    friend class base::NeverDestroyed<VigilSnmp>;
    VigilSnmp() = default;
    ~VigilSnmp() = default;

    /// How long a stop waits for each of its steps, in milliseconds; negative means without limit.
    struct Limits
    {
        int clientMs;
        int storeMs;
        int runnerMs;
    };

    static void cleanupAtExit();

    void startClient();
    void pauseClient(const std::shared_ptr<ApplicationRunner::Pause>& pause);
    void stop(const Limits& limits);
    bool stopClient(int timeoutMs);
    bool runClientExit(Client* client, int timeoutMs);
    bool endClientThread(int clientTimeoutMs);
    void muteCallbacks();
    bool releaseStore(int timeoutMs);
    bool releaseShared(int storeTimeoutMs);
    void abandonWithoutThreads();
    void abandon();

    void changeStore(const char* operation, const QString& logLine,
                     const std::function<void(CallbackStore&)>& change);

    ClientQueue m_clientQueue;
    ClientThread* m_clientThread = nullptr;
    std::shared_ptr<SnmpTableManager> m_tableManager;
    std::shared_ptr<CallbackStore> m_callbackStore; // guarded by m_storeMutex
    StoreMutex m_storeMutex;
    std::unique_ptr<ApplicationRunner> m_runner;
    int m_oidTypeId = 0;
    bool m_initialised = false;
    std::atomic<bool> m_outOfUse{false};
};

} // namespace vigil

#endif
