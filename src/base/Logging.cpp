// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/Logging.h"

#include <QFileInfo>

#include <new>

#include "base/KwLogFile.h"
#include "platform/Platform.h"

namespace base {

bool startLogging()
{
    return KwLogFile::instance().init(QStringLiteral("kw-vigil-snmp"), KwLogFile::defaultMaxFiles,
                                      KwLogFile::defaultMaxSize, false);
}

bool stopLogging()
{
    return KwLogFile::instance().shutdown();
}

bool stopLoggingWithoutOtherThreads()
{
    return KwLogFile::instance().shutdownWithoutOtherThreads();
}

bool writeLog(const QString& text)
{
    if (platform::isForkedChild())
        return false; // the file is the parent's
    const platform::DelayedCancellation delay;
    try {
        KwLogFile& log = KwLogFile::instance();
        log.appendLine(text);
        return log.writePending();
    } catch (const std::bad_alloc&) {
        return false; // the line is lost
    }
}

void logTypedMessage(QtMsgType type, const char* message)
{
    writeLog(QStringLiteral("%1: %2").arg(messageTypeName(type), QString::fromLocal8Bit(message)));
}

QString messageTypeName(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return QStringLiteral("Debug");
    case QtWarningMsg:
        return QStringLiteral("Warning");
    case QtCriticalMsg:
        return QStringLiteral("Critical");
    case QtFatalMsg:
        return QStringLiteral("Fatal");
    default:
        return QStringLiteral("Unknown");
    }
}

QString toHexString(quint64 value)
{
    return QStringLiteral("0x%1").arg(value, 16, 16, QLatin1Char('0'));
}

QString toHexString(const void* pointer)
{
    return toHexString(static_cast<quint64>(reinterpret_cast<quintptr>(pointer)));
}

quint32 currentThreadId()
{
    return platform::currentThreadId();
}

void sleepMs(unsigned int ms)
{
    platform::sleepMs(ms);
}

QString moduleFilePath(const char* moduleName)
{
    return QString::fromLocal8Bit(platform::moduleFilePath(moduleName).c_str());
}

QString moduleBaseName(const char* moduleName)
{
    return QFileInfo(moduleFilePath(moduleName)).baseName();
}

} // namespace base
