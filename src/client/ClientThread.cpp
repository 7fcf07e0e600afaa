// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ClientThread.h"

#include <QAbstractEventDispatcher>
#include <QString>

#include <atomic>
#include <cfenv>
#include <thread>

#include "base/Logging.h"
#include "base/UntilMemory.h"
#include "platform/Platform.h"

namespace {

constexpr int beginPollMs = 1000; // any limit will do: the wait is repeated

/// Asking Qt would create a thread object for every application thread that publishes. There is one client
/// thread at a time.
std::atomic<std::thread::id> clientThreadId{};

} // namespace

/// Connected first, so isCurrent() already holds in every other slot of started().
ClientThread::ClientThread()
{
    connect(this, &QThread::started, this, &ClientThread::begin, Qt::DirectConnection);
}

bool ClientThread::launch()
{
    const platform::BlockedSignals blocked;
    start(QThread::InheritPriority);
    if (!isRunning())
        return false;
    while (!m_hasBegun.tryAcquire(1, beginPollMs)) {
    }
    return true;
}

/// Runs in the thread. The first turn of Qt's event loop creates a window on Windows, which takes the
/// loader's lock.
void ClientThread::begin()
{
    clientThreadId = std::this_thread::get_id();
    std::fesetenv(FE_DFL_ENV); // the thread inherits the host's rounding and its traps
    eventDispatcher()->processEvents(QEventLoop::AllEvents);
    m_hasBegun.release();
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
