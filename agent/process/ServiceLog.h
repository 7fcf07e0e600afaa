// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_SERVICELOG_H
#define VIGIL_AGENT_PROCESS_SERVICELOG_H

#include <QString>

#include "agent/core/BackgroundWriter.h"
#include "agent/core/Log.h"
#include "agent/process/LogRing.h"

namespace agent {

/// The messages of the Windows service: lines of the event log, with their severity. Lines of --verbose, and
/// all lines on a host whose event log keeps none, go to a ring of files.
///
/// Threads: the main thread adds lines; another one writes, since the event log may be slow.
/// Ownership: one object, never destroyed: the thread may be writing.
/// Failure: write() returns false if too many lines are pending. A line is lost if neither log takes it.
class ServiceLog
{
public:
    explicit ServiceLog(const QString& folder);

    bool write(log::Severity severity, const QString& text);

    /// For the end of the process.
    void waitUntilWritten() { m_writer.waitUntilWritten(); }

private:
    bool report(log::Severity severity, const QString& text);
    void writeLine(log::Severity severity, const QString& text);

    LogRing m_files;
    void* m_source = nullptr; // null: the event log cannot be had
    bool m_isEventLogTried = false;
    BackgroundWriter m_writer;
};

} // namespace agent

#endif
