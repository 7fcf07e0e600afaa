// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_LOGGING_H
#define VIGIL_BASE_LOGGING_H

#include <QString>
#include <QtGlobal>

namespace base {

// What the library logs through. writeLog() and the formatting functions may be called from any thread;
// nothing throws. The library installs no Qt message handler.

/// Opens the library's log file. Belongs, like stopLogging(), to the thread of the library's event loop.
bool startLogging();
bool stopLogging();

/// Ends the log in a process that has lost its other threads.
bool stopLoggingWithoutOtherThreads();

/// Writes one line at once. Before startLogging() and after stopLogging() the line is dropped.
bool writeLog(const QString& text);

/// Writes "TYPE: MESSAGE"; has the shape of a message handler of the older kind.
void logTypedMessage(QtMsgType type, const char* message);

/// "Debug", "Warning", "Critical" or "Fatal"; "Unknown" for any other type.
QString messageTypeName(QtMsgType type);

/// "0x" and 16 lower-case digits: pointers and thread ids in log texts.
QString toHexString(quint64 value);
QString toHexString(const void* pointer);

/// The system's id of the calling thread.
quint32 currentThreadId();

void sleepMs(unsigned int ms);

/// The full path, or its base name, of a loaded module; null means the library itself. Empty when there is
/// none.
QString moduleFilePath(const char* moduleName);
QString moduleBaseName(const char* moduleName);

} // namespace base

#endif
