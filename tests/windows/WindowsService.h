// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_WINDOWS_WINDOWSSERVICE_H
#define VIGIL_WINDOWS_WINDOWSSERVICE_H

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <string>

#include <windows.h>

#include "agent/core/ServiceAccount.h"

namespace windows {

/// A service of this machine, by default vigil-agent, as its operator sees it.
///
/// Threads: one with an event loop.
class WindowsService
{
public:
    struct Outcome
    {
        int exitCode = -1; ///< -1 if the program crashed or did not end
        QByteArray out;
        QByteArray err;
    };

    explicit WindowsService(const QString& name = agent::serviceAccount::service());

    /// As sc create, for a service that this command line runs.
    bool create(const QString& commandLine) const;

    /// Stops and removes it, if it is there.
    void remove() const;

    /// Runs vigil-agent.exe from the folder, by default the build's, until it ends.
    Outcome run(const QStringList& arguments, const QString& folder = {}) const;

    /// Removes what tests leave: the service vigil-agent and its files.
    void clear() const;

    /// As sc start. Waits until the service runs or has stopped again. Returns whether it runs.
    bool start() const;

    /// Waits for the state, such as SERVICE_STOPPED.
    bool waitFor(DWORD state) const;

    /// As sc control. Returns the system's error.
    DWORD control(DWORD code) const;

    /// Ends the process as a crash would.
    bool crash() const;

    SERVICE_STATUS_PROCESS status() const;
    QString commandLine() const;
    QString account() const;
    DWORD startType() const;

    /// All lines in the service's ring of files.
    QByteArray log() const;
    bool waitForLog(const QByteArray& text, int times = 1) const;

private:
    const std::wstring m_name;
};

} // namespace windows

#endif
