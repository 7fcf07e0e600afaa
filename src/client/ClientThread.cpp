// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ClientThread.h"

#include <QString>

#include <atomic>
#include <thread>

#include "base/Logging.h"
#include "base/UntilMemory.h"

namespace {

/// Asking Qt would create a thread object for every application thread that publishes. There is one client
/// thread at a time.
std::atomic<std::thread::id> clientThreadId{};

} // namespace

/// Connected first, so isCurrent() already holds in every other slot of started().
ClientThread::ClientThread()
{
    const auto takeId = [] { clientThreadId = std::this_thread::get_id(); };
    connect(this, &QThread::started, this, takeId, Qt::DirectConnection);
}

bool ClientThread::isCurrent()
{
    return clientThreadId == std::this_thread::get_id();
}

void ClientThread::run()
{
    logEventLoop("started");
    exec();
    logEventLoop("stopped");
    clientThreadId = std::thread::id();
}

void ClientThread::logEventLoop(const char* event)
{
    base::untilMemory([&] {
        base::writeLog(
            QStringLiteral("ClientThread::run(): Event loop %1 in thread Id %2. QThread affinity = %3.")
                .arg(QLatin1String(event), base::toHexString(base::currentThreadId()),
                     base::toHexString(thread())));
    });
}
