// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ClientQueue.h"

#include <QMetaObject>

#include "client/Client.h"
#include "client/ClientThread.h"

void ClientQueue::open(Client* client)
{
    const base::MutexLock lock(m_mutex);
    m_client = client;
}

Client* ClientQueue::close()
{
    const base::MutexLock lock(m_mutex);
    Client* client = m_client;
    m_client = nullptr;
    return client;
}

Client* ClientQueue::client() const
{
    const base::MutexLock lock(m_mutex);
    return m_client;
}

template <typename... Arguments>
void ClientQueue::call(const char* slot, Arguments... arguments)
{
    if (ClientThread::isCurrent()) {
        // Not under the lock: the slot may call back into this function. Only this thread deletes the client.
        if (Client* current = client())
            QMetaObject::invokeMethod(current, slot, Qt::DirectConnection, arguments...);
        return;
    }
    const base::MutexLock lock(m_mutex);
    if (!m_client)
        return;
    const base::PostingLock posting;
    QMetaObject::invokeMethod(m_client, slot, Qt::QueuedConnection, arguments...);
}

void ClientQueue::sendValue(const Oid& oid, const QString& value, bool useTraps)
{
    call("sendValue", Q_ARG(Oid, oid), Q_ARG(QString, value), Q_ARG(bool, useTraps));
}

void ClientQueue::sendValue(const Oid& oid, int value, bool useTraps)
{
    call("sendValue", Q_ARG(Oid, oid), Q_ARG(qint32, value), Q_ARG(bool, useTraps));
}

void ClientQueue::unsetOid(const Oid& oid)
{
    call("unsetOid", Q_ARG(Oid, oid));
}

void ClientQueue::unsetOidTree(const Oid& oid)
{
    call("unsetOidTree", Q_ARG(Oid, oid));
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
    QMetaObject::invokeMethod(client, function, Qt::QueuedConnection);
}
