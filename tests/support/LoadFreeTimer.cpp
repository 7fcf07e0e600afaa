// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "LoadFreeTimer.h"

#include <QCoreApplication>
#include <QFile>

namespace support {

namespace {

QByteArray statistics(qint64 process, const char* name)
{
    QFile file(QStringLiteral("/proc/%1/%2").arg(process).arg(QLatin1String(name)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool isAsleep(qint64 process)
{
    const QByteArray text = statistics(process, "stat"); // PID (NAME) STATE ...
    const QByteArray state = text.mid(text.lastIndexOf(')') + 2, 1);
    return state == "S" || state == "D" || state == "T"; // else it runs, waits for a processor, or has ended
}

/// How long the process has waited for a processor, without the present wait.
qint64 waitedNs(qint64 process)
{
    return statistics(process, "schedstat").split(' ').value(1).toLongLong(); // computed, waited, turns
}

} // namespace

LoadFreeTimer::LoadFreeTimer(const std::vector<qint64>& processes)
{
    for (const qint64 process : processes)
        m_processes.push_back({process, waitedNs(process)});
    m_processes.push_back({QCoreApplication::applicationPid(), waitedNs(QCoreApplication::applicationPid())});
    m_time.start();
    QObject::connect(&m_turn, &QTimer::timeout, &m_turn, [this] { measure(); });
    m_turn.start(1);
}

void LoadFreeTimer::measure()
{
    qint64 passedNs = m_time.nsecsElapsed();
    for (const Process& process : m_processes) {
        if (process.id != QCoreApplication::applicationPid() && !isAsleep(process.id))
            return;
        passedNs -= waitedNs(process.id) - process.waitedNs;
    }
    m_elapsedMs = passedNs / 1'000'000;
}

} // namespace support
