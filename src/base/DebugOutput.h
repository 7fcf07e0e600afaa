// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_DEBUGOUTPUT_H
#define VIGIL_BASE_DEBUGOUTPUT_H

#include <QDebug>
#include <QLoggingCategory>

#include "platform/Platform.h"

namespace base {

// The library's categories of Qt's debug output, on by default. QT_LOGGING_RULES="vigil.*=false" turns off
// the library's lines alone.

const QLoggingCategory& connectionCategory(); ///< vigil.connection
const QLoggingCategory& logCategory();        ///< vigil.log: warnings about the log file
const QLoggingCategory& metricsCategory();    ///< vigil.metrics
const QLoggingCategory& tablesCategory();     ///< vigil.tables

/// Access to Qt's debug output for the length of a scope.
///
/// A thread of the application may still update its checks while the process ends and Qt destroys its
/// statics. From closeDebugOutput() on, nothing is written.
class DebugOutput
{
public:
    explicit DebugOutput(const QLoggingCategory& (*wanted)(), QtMsgType type = QtDebugMsg);
    ~DebugOutput();
    DebugOutput(const DebugOutput&) = delete;
    DebugOutput& operator=(const DebugOutput&) = delete;

    /// The category if its lines are wanted, else null.
    const QLoggingCategory* category() const { return m_category; }

private:
    const platform::DelayedCancellation m_delay;
    const QLoggingCategory* m_category = nullptr;
};

/// Passes a QDebug for one line to write(), unless the category is turned off.
template <typename Write>
void writeDebug(const QLoggingCategory& (*category)(), Write write)
{
    const DebugOutput output(category);
    if (output.category())
        write(QMessageLogger(nullptr, 0, nullptr, output.category()->categoryName()).debug());
}

/// Writes one fixed text as a debug line.
void writeDebug(const QLoggingCategory& (*category)(), const char* text);

/// Writes one text as a warning.
void writeWarning(const QLoggingCategory& (*category)(), const QString& text);

/// Creates the statics that the output needs. Those made later would be destroyed before the library's exit
/// handler runs.
void prepareDebugOutput();

/// Ends the output and waits for lines in progress, for at most a second.
void closeDebugOutput();

} // namespace base

#endif
