// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_LOADFREETIMER_H
#define VIGIL_SUPPORT_LOADFREETIMER_H

#include <QElapsedTimer>
#include <QTimer>

#include <map>
#include <vector>

namespace support {

/// Measures time without the waits for a processor, of the given processes and of the test, and without the
/// pauses of a virtual machine. It proves on a busy machine that the product keeps a time it promises.
///
/// It looks at the processes while the test's event loop runs. It never shows too much: it counts up to the
/// last moment at which all of them slept, since the system counts a wait only when it is over. If the event
/// loop stands still, without a wait for a processor, that counts as a pause. On an idle machine it shows
/// plain time.
///
/// Failure: plain time on systems without Linux's /proc.
class LoadFreeTimer
{
public:
    /// Starts now.
    explicit LoadFreeTimer(const std::vector<qint64>& processes);

    /// Until one of the processes ended, or until now.
    qint64 elapsedMs() const { return m_elapsedMs; }

private:
    void measure();
    qint64 waitedNs();

    std::vector<qint64> m_processes;
    std::map<QString, qint64> m_waitedNs; // by the folder of a thread, which may have ended
    qint64 m_waitedBeforeNs;
    QElapsedTimer m_time;
    qint64 m_freeNs = 0; // at the last turn
    qint64 m_pausedNs = 0;
    qint64 m_elapsedMs = 0;
    QTimer m_turn;
};

} // namespace support

#endif
