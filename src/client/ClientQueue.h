// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_CLIENTQUEUE_H
#define VIGIL_CLIENT_CLIENTQUEUE_H

#include <QString>

#include <functional>

#include <vigil/Oid.h>

#include "base/ThreadSafety.h"

class Client;

/// The way into the client thread: puts calls into the client's event queue.
///
/// Purpose: the one place where other threads call the client. Without a client, calls are dropped.
///
/// Threads: any. A call from the client thread, from inside a callback, runs at once.
///
/// Ownership: borrows the client between open() and close().
class ClientQueue
{
public:
    void open(Client* client);

    /// Returns the client, or null. Calls made before still run.
    Client* close();

    bool isOpen() const { return client() != nullptr; }

    // The client's slots of the same names.
    void sendValue(const vigil::Oid& oid, const QString& value, bool useTraps);
    void sendValue(const vigil::Oid& oid, int value, bool useTraps);
    void unsetOid(const vigil::Oid& oid);
    void unsetOidTree(const vigil::Oid& oid);

    /// Queues a function for the client thread. False without a client.
    bool post(const std::function<void()>& function);

    /// The same for a client that close() has returned.
    static void post(Client* client, const std::function<void()>& function);

private:
    Client* client() const;

    template <typename... Arguments>
    void call(const char* slot, Arguments... arguments);

    mutable base::Mutex m_mutex; // held while posting, so the client cannot be deleted meanwhile
    Client* m_client VIGIL_GUARDED_BY(m_mutex) = nullptr;
};

#endif
