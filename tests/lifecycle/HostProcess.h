// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_LIFECYCLE_HOSTPROCESS_H
#define VIGIL_TESTS_LIFECYCLE_HOSTPROCESS_H

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// A process that uses the library, with a log directory of its own.
///
/// The test's event loop runs while it waits, so that services in the test answer meanwhile. A host that does
/// not end within the limit is killed.
class HostProcess
{
public:
    /// No orderly way to end a process may take longer.
    static constexpr int limitMs = 8000;

    /// What a host does before may take this long on a busy machine.
    static constexpr int startLimitMs = 30000;

    /// Starts program with arguments; the library connects to servicePort. On Windows the host begins to end
    /// only when the library's threads have come to rest. Ending the process ends them wherever they are;
    /// under Wine, a thread that is ended inside a call of the window system keeps that system's lock, for
    /// which Qt waits at the very end. (Windows itself ends no thread there.)
    HostProcess(const QString& program, const QStringList& arguments, int servicePort);
    ~HostProcess();

    /// Waits until the host has printed line.
    bool waitForLine(const QString& line, int timeoutMs = startLimitMs);

    void say(const QString& line);

    /// Waits until the host has ended by itself and returns its exit code; -1 when it crashed or had to be
    /// killed.
    int exitCode();

    /// Whether it has ended, in whatever way, without having to be killed. For after exitCode().
    bool endedByItself() const { return m_process.state() == QProcess::NotRunning; }

    /// How long the host took to come to the line "leaving".
    qint64 startingMs() const { return m_startingMs; }

    /// How long the host took from the line "leaving" to its end.
    qint64 leavingMs() const { return m_leavingMs; }

    QString output() const { return QString::fromUtf8(m_output); }

    /// All lines of the library's log, in order.
    QStringList log() const;

private:
    void readOutput();
    void waitForRest();

    QTemporaryDir m_logDirectory;
    QProcess m_process;
    QByteArray m_output;
    qint64 m_startingMs = 0;
    qint64 m_leavingMs = 0;
};

#endif
