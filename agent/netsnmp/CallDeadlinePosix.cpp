// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/CallDeadline.h"

#include <csignal>

#include <sys/time.h>

namespace agent {

namespace {

// A signal just before the call does not interrupt it, so another follows soon.
constexpr suseconds_t repetitionUs = 50'000;

extern "C" void doNothing(int) {}

} // namespace

CallDeadline::CallDeadline(std::chrono::milliseconds time)
{
    struct sigaction action = {};
    action.sa_handler = doNothing; // without SA_RESTART: the interrupted call fails
    sigemptyset(&action.sa_mask);
    sigaction(SIGALRM, &action, nullptr);
    itimerval timer = {};
    timer.it_value.tv_sec = static_cast<time_t>(time.count() / 1000);
    timer.it_value.tv_usec = static_cast<suseconds_t>(time.count() % 1000 * 1000);
    timer.it_interval.tv_usec = repetitionUs;
    setitimer(ITIMER_REAL, &timer, nullptr);
}

CallDeadline::~CallDeadline()
{
    const itimerval off = {};
    setitimer(ITIMER_REAL, &off, nullptr);
}

} // namespace agent
