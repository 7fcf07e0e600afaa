#include "client/ClientThread.h"

#include <QString>

#include "base/Logging.h"

bool ClientThread::isCurrent()
{
    return qobject_cast<ClientThread*>(QThread::currentThread()) != nullptr;
}

void ClientThread::run()
{
    logEventLoop("started");
    exec();
    logEventLoop("stopped");
}

void ClientThread::logEventLoop(const char* event)
{
    base::writeLog(
        QStringLiteral("ClientThread::run(): Event loop %1 in thread Id %2. QThread affinity = %3.")
            .arg(QLatin1String(event), base::toHexString(base::currentThreadId()),
                 base::toHexString(thread())));
}
