// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ClientQueue.h"

#include <QMetaMethod>
#include <QMetaObject>
#include <QVariant>

#include <utility>

#include "base/UntilMemory.h"
#include "client/Client.h"
#include "client/ClientThread.h"
#include "client/OidType.h"

namespace {

// With 125 kB a published cell took 1.2 us of the application's thread, with 15 kB 0.4 us. Where the host of
// a virtual machine keeps its two processors far apart, it was 6 us and 1.5 us at most.
constexpr int maxQueuedBytes = 15000;

/// What a posted call takes, roughly: the event and the nodes of the identifier's list.
int bytesOfCall(const Oid& oid, int textLength = 0)
{
    constexpr int eventBytes = 300;
    constexpr int arcBytes = 32;
    return eventBytes + arcBytes * oid.size() + static_cast<int>(sizeof(QChar)) * textLength;
}

/// A slot by its name. The look-up is 15 % of a queued call, so each is looked up once.
QMetaMethod slotNamed(const char* signature)
{
    const QMetaObject& client = Client::staticMetaObject;
    return client.method(client.indexOfSlot(signature));
}

void publish(Client& client, const Publication& publication)
{
    if (publication.kind == Publication::Kind::TreeWithdrawal)
        client.unsetOidTree(Oid::fromStdVector(publication.oid));
    else
        client.publish(publication.oid, publication.value, publication.notify);
}

Publication valueOf(const Oid& oid, const QVariant& value, bool notify)
{
    return {Publication::Kind::Value, oid.toStdVector(), value, notify};
}

Publication withdrawalOfTree(const Oid& tree)
{
    return {Publication::Kind::TreeWithdrawal, tree.toStdVector(), QVariant(), false};
}

/// Queues a call with post(), which returns false if it cannot.
template <typename Post>
bool announceAndPost(Client& client, Post post)
{
    client.announceCall(); // before it is queued: the client may run it, and be deleted, at any moment
    try {
        if (post())
            return true;
    } catch (...) {
        client.revokeCall();
        throw;
    }
    client.revokeCall();
    return false;
}

} // namespace

void ClientQueue::open(Client* client)
{
    const base::MutexLock lock(m_mutex);
    m_client = client;
    m_overflow = QueueOverflow(overflowBytes);
    m_handOver.reset();
    m_lastCall.reset();
    m_queuedBytes = 0;
}

Client* ClientQueue::close()
{
    const base::MutexLock lock(m_mutex);
    if (m_client && !m_overflow.isEmpty())
        requestHandOver();
    return std::exchange(m_client, nullptr);
}

Client* ClientQueue::client() const
{
    const base::MutexLock lock(m_mutex);
    return m_client;
}

template <typename Describe, typename... Arguments>
void ClientQueue::call(int bytes, Describe publication, const QMetaMethod& slot, Arguments... arguments)
{
    if (ClientThread::isCurrent()) {
        // Not under the lock: the slot may call back into this function. Only this thread deletes the client.
        Client* current = client();
        if (current && !current->hasQueuedCalls()) {
            slot.invoke(current, Qt::DirectConnection, arguments...);
            return;
        }
    }
    const base::MutexLock lock(m_mutex);
    if (!m_client)
        return;
    if (isFull()) {
        m_overflow.add(publication());
        requestHandOver();
        return;
    }
    {
        const base::PostingLock posting;
        const auto post = [&, client = m_client] {
            return announceAndPost(*client,
                                   [&] { return slot.invoke(client, Qt::QueuedConnection, arguments...); });
        };
        if (!post()) { // another copy of the library has taken its registration back
            OidType::enroll();
            post();
        }
    }
    countPosted(bytes);
}

void ClientQueue::sendValue(const Oid& oid, const QString& value, bool useTraps)
{
    static const QMetaMethod slot = slotNamed("sendValue(Oid,QString,bool)");
    call(
        bytesOfCall(oid, value.size()), [&] { return valueOf(oid, value, useTraps); }, slot, Q_ARG(Oid, oid),
        Q_ARG(QString, value), Q_ARG(bool, useTraps));
}

void ClientQueue::sendValue(const Oid& oid, int value, bool useTraps)
{
    static const QMetaMethod slot = slotNamed("sendValue(Oid,qint32,bool)");
    call(
        bytesOfCall(oid), [&] { return valueOf(oid, value, useTraps); }, slot, Q_ARG(Oid, oid),
        Q_ARG(qint32, value), Q_ARG(bool, useTraps));
}

void ClientQueue::unsetOid(const Oid& oid)
{
    static const QMetaMethod slot = slotNamed("unsetOid(Oid)");
    call(
        bytesOfCall(oid), [&] { return valueOf(oid, QVariant(), false); }, slot, Q_ARG(Oid, oid));
}

void ClientQueue::unsetOidTree(const Oid& oid)
{
    static const QMetaMethod slot = slotNamed("unsetOidTree(Oid)");
    call(
        bytesOfCall(oid), [&] { return withdrawalOfTree(oid); }, slot, Q_ARG(Oid, oid));
}

/// Calls after those in the overflow must not overtake them.
bool ClientQueue::isFull() const
{
    return !m_overflow.isEmpty() || !m_lastCall.expired();
}

void ClientQueue::countPosted(int bytes)
{
    m_queuedBytes += bytes;
    if (m_queuedBytes < maxQueuedBytes)
        return;
    m_queuedBytes = 0;
    const auto life = std::make_shared<char>();
    m_lastCall = life;
    post(m_client, [life] {});
}

void ClientQueue::requestHandOver()
{
    if (!m_handOver.expired())
        return;
    const auto life = std::make_shared<char>();
    m_handOver = life;
    post(m_client, [this, life, client = m_client] { handOver(client); });
}

/// Runs in the client thread. Calls made from now on are posted again, so they run afterwards.
void ClientQueue::handOver(Client* client)
{
    QueueOverflow taken(overflowBytes);
    {
        const base::MutexLock lock(m_mutex);
        std::swap(m_overflow, taken);
        m_handOver.reset();
    }
    for (std::size_t i = 0; i < taken.all().size(); ++i)
        base::untilMemory([&] { publish(*client, taken.all().at(i)); });
    for (const Publication& publication : taken.latest().all())
        base::untilMemory([&] { publish(*client, publication); });
}

bool ClientQueue::post(const std::function<void()>& function)
{
    const base::MutexLock lock(m_mutex);
    if (m_client)
        post(m_client, function);
    return m_client != nullptr;
}

void ClientQueue::post(Client* client, const std::function<void()>& function)
{
    const base::PostingLock posting;
    const auto flushFirst = [client, function] {
        client->flush(); // the function may take its time
        function();
    };
    announceAndPost(*client,
                    [&] { return QMetaObject::invokeMethod(client, flushFirst, Qt::QueuedConnection); });
}
