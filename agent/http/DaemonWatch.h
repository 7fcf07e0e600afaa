// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_HTTP_DAEMONWATCH_H
#define VIGIL_AGENT_HTTP_DAEMONWATCH_H

#include <functional>
#include <memory>

#include <microhttpd.h>

namespace agent {

/// Waits in the event loop for the sockets of libmicrohttpd. One source file for each system.
///
/// Ownership: the daemon must outlive it.
class DaemonWatch
{
public:
    /// The daemon must be started with these flags, so that it has no loop of its own.
    static const unsigned int daemonFlags;

    /// Calls run when a socket is ready.
    DaemonWatch(MHD_Daemon* daemon, std::function<void()> run);
    ~DaemonWatch();
    DaemonWatch(const DaemonWatch&) = delete;
    DaemonWatch& operator=(const DaemonWatch&) = delete;

    /// To call after each MHD_run(): the daemon may now wait for other sockets.
    void update();

    /// To call before the daemon closes the socket: a new one may have the same number.
    void forget(MHD_socket socket);

private:
    struct System;
    std::unique_ptr<System> m_system;
};

} // namespace agent

#endif
