// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#define FD_SETSIZE 1024 // 64 by default; all connections and the listener must fit

#include "agent/http/DaemonWatch.h"

#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <map>
#include <utility>

#include "agent/http/HttpServer.h"

namespace agent {

static_assert(FD_SETSIZE > HttpServer::maxConnections);

namespace {

/// A notifier may end while it calls.
struct EndLater
{
    void operator()(QSocketNotifier* notifier) const
    {
        notifier->setEnabled(false);
        notifier->deleteLater();
    }
};

using Notifier = std::unique_ptr<QSocketNotifier, EndLater>;
using Notifiers = std::map<SOCKET, Notifier>;

bool contains(const fd_set& set, SOCKET socket)
{
    const SOCKET* end = set.fd_array + set.fd_count;
    return std::find(set.fd_array, end, socket) != end;
}

} // namespace

struct DaemonWatch::System
{
    /// Watches the sockets in the set, and no others.
    void watch(const fd_set& set, QSocketNotifier::Type type, Notifiers& notifiers)
    {
        for (auto each = notifiers.begin(); each != notifiers.end();)
            each = contains(set, each->first) ? std::next(each) : notifiers.erase(each);
        for (u_int index = 0; index < set.fd_count; ++index) {
            auto& notifier = notifiers[set.fd_array[index]];
            if (!notifier)
                notifier = make(set.fd_array[index], type);
            notifier->setEnabled(true);
        }
    }

    /// However many sockets are ready, the daemon runs once. Meanwhile they need not tell again.
    Notifier make(SOCKET socket, QSocketNotifier::Type type)
    {
        Notifier notifier(new QSocketNotifier(static_cast<qintptr>(socket), type));
        QObject::connect(notifier.get(), &QSocketNotifier::activated, &soon, [this, own = notifier.get()] {
            own->setEnabled(false);
            soon.start(0);
        });
        return notifier;
    }

    MHD_Daemon* daemon = nullptr;
    QTimer soon;
    Notifiers readable;
    Notifiers writable;
};

const unsigned int DaemonWatch::daemonFlags = MHD_NO_FLAG;

DaemonWatch::DaemonWatch(MHD_Daemon* daemon, std::function<void()> run) : m_system(std::make_unique<System>())
{
    m_system->daemon = daemon;
    m_system->soon.setSingleShot(true);
    QObject::connect(&m_system->soon, &QTimer::timeout, &m_system->soon, std::move(run));
    update();
}

DaemonWatch::~DaemonWatch() = default;

void DaemonWatch::update()
{
    fd_set readable = {};
    fd_set writable = {};
    fd_set unused = {};
    if (MHD_get_fdset2(m_system->daemon, &readable, &writable, &unused, nullptr, FD_SETSIZE) != MHD_YES)
        return;
    m_system->watch(readable, QSocketNotifier::Read, m_system->readable);
    m_system->watch(writable, QSocketNotifier::Write, m_system->writable);
}

void DaemonWatch::forget(MHD_socket socket)
{
    m_system->readable.erase(socket);
    m_system->writable.erase(socket);
}

} // namespace agent
