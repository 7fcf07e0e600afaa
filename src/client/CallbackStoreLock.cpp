#include "client/CallbackStoreLock.h"

#include <QString>

#include "base/Logging.h"
#include "client/CallbackStore.h"
#include "client/StoreMutex.h"
#include "client/VigilSnmp.h"

using vigil::VigilSnmp;

CallbackStoreLock::CallbackStoreLock() : m_mutex(VigilSnmp::instance().storeMutex())
{
    m_mutex.lock();
    m_store = VigilSnmp::instance().callbackStore(); // fetched under the lock that guards it
}

CallbackStoreLock::~CallbackStoreLock()
{
    m_mutex.unlock();
}

bool CallbackStoreLock::isHeldByThisThread()
{
    return VigilSnmp::instance().storeMutex().isHeldByThisThread();
}

bool CallbackStoreLock::refuseInsideCallback(const char* operation)
{
    if (!isHeldByThisThread())
        return false;
    base::writeLog(
        QStringLiteral("___ERROR___ %1 was called from inside a callback of the library. It would wait for "
                       "its own thread for ever, so it did nothing.")
            .arg(QLatin1String(operation)));
    return true;
}
