// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/http/DaemonWatch.h"

#include <QSocketNotifier>

#include <utility>

namespace agent {

/// One descriptor tells when any of the others is ready.
struct DaemonWatch::System
{
    explicit System(int descriptor) : notifier(descriptor, QSocketNotifier::Read) {}

    QSocketNotifier notifier;
};

const unsigned int DaemonWatch::daemonFlags = MHD_USE_EPOLL;

DaemonWatch::DaemonWatch(MHD_Daemon* daemon, std::function<void()> run)
    : m_system(std::make_unique<System>(MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd))
{
    QSocketNotifier& notifier = m_system->notifier;
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, std::move(run));
}

DaemonWatch::~DaemonWatch() = default;

void DaemonWatch::update() {}

void DaemonWatch::forget(MHD_socket) {}

} // namespace agent
