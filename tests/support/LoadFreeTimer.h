// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_LOADFREETIMER_H
#define VIGIL_SUPPORT_LOADFREETIMER_H

#include <QElapsedTimer>
#include <QTimer>

#include <vector>

namespace support {

/// Measures time without the waits for a processor, of the given processes and of the test. Where the product
/// promises to take at most some time, a test can so prove it on a busy machine, too.
///
/// It looks at the processes while the test's event loop runs. It never shows too much: it counts up to the
/// last moment at which all of them slept, since the system counts a wait only when it is over.
///
/// Failure: plain time if the system does not tell how long processes wait.
class LoadFreeTimer
{
public:
    /// Starts now. Each process has a single thread.
    explicit LoadFreeTimer(const std::vector<qint64>& processes);

    /// Until one of the processes ended, or until now.
    qint64 elapsedMs() const { return m_elapsedMs; }

private:
    struct Process
    {
        qint64 id;
        qint64 waitedNs; // before the start
    };

    void measure();

    std::vector<Process> m_processes;
    QElapsedTimer m_time;
    qint64 m_elapsedMs = 0;
    QTimer m_turn;
};

} // namespace support

#endif
