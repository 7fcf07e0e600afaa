#include "client/ClientThread.h"

#include <QString>

#include <atomic>
#include <thread>

#include "base/Logging.h"

namespace {

/// Not asked of Qt, which would make a thread object for every application thread that publishes something.
/// There is one client thread at a time.
std::atomic<std::thread::id> clientThreadId{};

} // namespace

bool ClientThread::isCurrent()
{
    return clientThreadId == std::this_thread::get_id();
}

void ClientThread::run()
{
    clientThreadId = std::this_thread::get_id();
    logEventLoop("started");
    exec();
    logEventLoop("stopped");
    clientThreadId = std::thread::id();
}

void ClientThread::logEventLoop(const char* event)
{
    base::writeLog(
        QStringLiteral("ClientThread::run(): Event loop %1 in thread Id %2. QThread affinity = %3.")
            .arg(QLatin1String(event), base::toHexString(base::currentThreadId()),
                 base::toHexString(thread())));
}
