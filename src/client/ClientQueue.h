// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_CLIENTQUEUE_H
#define VIGIL_CLIENT_CLIENTQUEUE_H

#include <QString>

#include <functional>
#include <memory>

#include <vigil/Oid.h>

#include "base/ThreadSafety.h"
#include "client/QueueOverflow.h"

class Client;
class QMetaMethod;

/// The way into the client thread: puts calls into the client's event queue.
///
/// Purpose: the one place where other threads call the client. Without a client, calls are dropped. If the
/// client falls behind, the event queue takes no more than about 15 kB, some 12 cells. Further publications
/// go into a QueueOverflow, and the client takes them over when it has run the calls before them. A queued
/// call takes forty blocks of memory, a publication there none of its own. While both threads run, each block
/// passes from one processor's cache to the other's, so such a publication costs a tenth of a queued call.
///
/// Threads: any. A call from the client thread, from inside a callback, runs at once, unless earlier calls
/// are still queued: the last value must win.
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
    static constexpr std::size_t overflowBytes = 16'000'000; // some 90,000 cells

    Client* client() const;

    /// publication returns the same as the call, for the overflow.
    template <typename Describe, typename... Arguments>
    void call(int bytes, Describe publication, const QMetaMethod& slot, Arguments... arguments);

    bool isFull() const VIGIL_REQUIRES(m_mutex);
    void countPosted(int bytes) VIGIL_REQUIRES(m_mutex);
    void requestHandOver() VIGIL_REQUIRES(m_mutex);
    void handOver(Client* client);

    mutable base::Mutex m_mutex; // held while posting, so the client cannot be deleted meanwhile
    Client* m_client VIGIL_GUARDED_BY(m_mutex) = nullptr;
    QueueOverflow m_overflow VIGIL_GUARDED_BY(m_mutex){overflowBytes};

    // A posted function holds each of these, so they expire once it has run, or once Qt has dropped it.
    std::weak_ptr<void> m_handOver VIGIL_GUARDED_BY(m_mutex); // takes over the overflow
    std::weak_ptr<void> m_lastCall VIGIL_GUARDED_BY(m_mutex); // after as many calls as the queue takes
    int m_queuedBytes VIGIL_GUARDED_BY(m_mutex) = 0;          // of the calls since that one
};

#endif
