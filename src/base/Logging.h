// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_LOGGING_H
#define VIGIL_BASE_LOGGING_H

#include <QString>
#include <QtGlobal>

namespace base {

// The library's logging. writeLog() and the formatting functions may be called from any thread; nothing
// throws. The library installs no Qt message handler.

/// Opens and closes the library's log file. Only the thread of the library's event loop may call these two.
bool startLogging();
bool stopLogging();

/// Closes the log in a process whose other threads are gone.
bool stopLoggingWithoutOtherThreads();

/// Writes one line immediately. Drops it before startLogging() and after stopLogging().
bool writeLog(const QString& text);

/// Writes "TYPE: MESSAGE". The signature is that of a Qt 4 message handler.
void logTypedMessage(QtMsgType type, const char* message);

/// "Debug", "Warning", "Critical" or "Fatal"; "Unknown" for any other type.
QString messageTypeName(QtMsgType type);

/// "0x" and 16 lower-case digits, for pointers and thread ids in log texts.
QString toHexString(quint64 value);
QString toHexString(const void* pointer);

/// The system's id of the calling thread.
quint32 currentThreadId();

void sleepMs(unsigned int ms);

/// The full path or the base name of a loaded module; empty if it is not loaded. A null name means the
/// library itself.
QString moduleFilePath(const char* moduleName);
QString moduleBaseName(const char* moduleName);

} // namespace base

#endif
