// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/Signals.h"

#include <mutex>

#include <windows.h>

namespace agent {

namespace {

std::mutex mutex;
Signals* receiver = nullptr;

constexpr DWORD longerThanTheSystemWaitsMs = 60'000;

void post(void (Signals::*signal)())
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (receiver)
        QMetaObject::invokeMethod(receiver, signal, Qt::QueuedConnection);
}

/// The system calls it in a thread of its own. When the console closes, the process ends with this call, or
/// after the time that the system grants; meanwhile the agent ends by itself.
BOOL WINAPI handleConsole(DWORD event)
{
    post(event == CTRL_BREAK_EVENT ? &Signals::reloadRequested : &Signals::endRequested);
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(longerThanTheSystemWaitsMs);
    return TRUE;
}

} // namespace

struct Signals::System
{
};

Signals::Signals()
{
    const std::lock_guard<std::mutex> lock(mutex);
    receiver = this;
    SetConsoleCtrlHandler(nullptr, FALSE); // a parent may have switched Ctrl-C off
    SetConsoleCtrlHandler(&handleConsole, TRUE);
}

// The handler stays: until the process has ended, a second Ctrl-C must not cut the end short.
Signals::~Signals()
{
    const std::lock_guard<std::mutex> lock(mutex);
    receiver = nullptr;
}

} // namespace agent
