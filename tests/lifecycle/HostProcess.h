// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_LIFECYCLE_HOSTPROCESS_H
#define VIGIL_TESTS_LIFECYCLE_HOSTPROCESS_H

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include "lifecycle/WineHang.h"

/// A process with the library and its own log directory.
///
/// Waiting runs the test's event loop, so services in the test can answer. A host is killed at the time
/// limit.
class HostProcess
{
public:
    /// Limit for every clean shutdown, without the load of the machine.
    static constexpr int limitMs = 8000;

    /// What the host writes to stderr.
    enum class Errors { Shown, Dropped };

    /// Starts program with arguments; the library connects to servicePort. On Windows the shutdown starts
    /// only once the library's threads are idle. Wine may end a thread inside a call of the window system
    /// with that system's lock held, and Qt would wait for the lock. Windows itself ends no thread there.
    HostProcess(const QString& program, const QStringList& arguments, int servicePort,
                Errors errors = Errors::Shown);
    ~HostProcess();

    /// Waits until the host has printed line.
    bool waitForLine(const QString& line);

    void say(const QString& line);

    /// Waits for the host's exit and returns its exit code; -1 if it crashed, was killed,
    /// or took longer than the limit after the line "leaving".
    int exitCode();

    /// After exitCode(): true unless the host was killed.
    bool endedByItself() const { return m_process.state() == QProcess::NotRunning; }

    /// After exitCode(): how the host ended, for a message.
    QString ending() const;

    /// After exitCode(): true if the host hangs in a lock of Wine's own.
    bool hangsInWine() const { return !endedByItself() && ::hangsInWine(m_process.processId()); }

    /// The time from the call of exitCode() to the line "leaving", without the load of the machine.
    qint64 startingMs() const { return m_startingMs; }

    /// The time from the line "leaving" to the exit, without the load of the machine.
    qint64 leavingMs() const { return m_leavingMs; }

    QString output() const { return QString::fromUtf8(m_output); }

    /// All lines of the library's log.
    QStringList log() const;

private:
    void readOutput();
    bool hasLine(const QString& line);
    bool isOver() const;
    void waitForRest();

    QTemporaryDir m_logDirectory;
    QProcess m_process;
    QByteArray m_output;
    qint64 m_startingMs = 0;
    qint64 m_leavingMs = 0;
};

#endif
