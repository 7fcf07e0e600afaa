// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/Signals.h"

#include <QSocketNotifier>

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace agent {

namespace {

int pipeEnds[2] = {-1, -1};

// A signal handler may do little more than write to a pipe.
extern "C" void wakeEventLoop(int signalNumber)
{
    const int savedError = errno;
    const char byte = static_cast<char>(signalNumber);
    [[maybe_unused]] const ssize_t written = write(pipeEnds[1], &byte, 1);
    errno = savedError;
}

void handle(int signalNumber, void (*handler)(int), int flags = SA_RESTART)
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    sigaction(signalNumber, &action, nullptr);
}

} // namespace

struct Signals::System
{
    QSocketNotifier notifier{pipeEnds[0], QSocketNotifier::Read};
};

Signals::Signals()
{
    handle(SIGPIPE, SIG_IGN); // a manager may close its TCP connection at any time
    if (pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_system = std::make_unique<System>();
    connect(&m_system->notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        while (read(pipeEnds[0], &byte, 1) > 0) {
            if (byte == SIGHUP)
                emit reloadRequested();
            else
                emit endRequested();
        }
    });
    handle(SIGHUP, wakeEventLoop);
    // Without SA_RESTART: these interrupt a blocking call, such as a connect to an absent host.
    handle(SIGTERM, wakeEventLoop, 0);
    handle(SIGINT, wakeEventLoop, 0);
}

Signals::~Signals()
{
    handle(SIGHUP, SIG_DFL);
    handle(SIGTERM, SIG_DFL);
    handle(SIGINT, SIG_DFL);
    m_system.reset();
    close(pipeEnds[0]);
    close(pipeEnds[1]);
}

} // namespace agent
