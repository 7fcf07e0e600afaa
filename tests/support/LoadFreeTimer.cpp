// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "LoadFreeTimer.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSysInfo>

#include <algorithm>

namespace support {

namespace {

constexpr qint64 longestTurnNs = 100'000'000; // of the event loop; a longer one is a pause of the machine

QStringList threadsOf(qint64 process)
{
    const QString folder = QStringLiteral("/proc/%1/task/").arg(process);
    QStringList threads = QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (QString& thread : threads)
        thread.prepend(folder);
    return threads;
}

QByteArray content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool isAsleep(const QString& thread)
{
    const QByteArray text = content(thread + QStringLiteral("/stat")); // ID (NAME) STATE ...
    const QByteArray state = text.mid(text.lastIndexOf(')') + 2, 1);
    return state == "S" || state == "D" || state == "T"; // else it runs, waits for a processor, or has ended
}

bool isAllAsleep(qint64 process)
{
    const QStringList threads = threadsOf(process);
    return !threads.isEmpty() && std::all_of(threads.begin(), threads.end(), &isAsleep);
}

} // namespace

LoadFreeTimer::LoadFreeTimer(const std::vector<qint64>& processes)
{
    if (QSysInfo::kernelType() == QLatin1String("linux"))
        m_processes = processes;
    m_waitedBeforeNs = waitedNs();
    m_time.start();
    QObject::connect(&m_turn, &QTimer::timeout, &m_turn, [this] { measure(); });
    m_turn.start(1);
}

void LoadFreeTimer::measure()
{
    const qint64 passedNs = m_time.nsecsElapsed();
    const bool isAsleep = std::all_of(m_processes.begin(), m_processes.end(), &isAllAsleep);
    const qint64 freeNs = passedNs - (waitedNs() - m_waitedBeforeNs);
    if (freeNs - m_freeNs > longestTurnNs)
        m_pausedNs += freeNs - m_freeNs;
    m_freeNs = freeNs;
    if (isAsleep)
        m_elapsedMs = (freeNs - m_pausedNs) / 1'000'000;
}

qint64 LoadFreeTimer::waitedNs()
{
    QStringList threads;
    if (!m_processes.empty())
        threads = threadsOf(QCoreApplication::applicationPid());
    for (const qint64 process : m_processes)
        threads += threadsOf(process);
    for (const QString& thread : threads) {
        const QByteArray times = content(thread + QStringLiteral("/schedstat")); // computed, waited, turns
        if (!times.isEmpty())
            m_waitedNs[thread] = times.split(' ').value(1).toLongLong();
    }
    qint64 sum = 0;
    for (const auto& [thread, waited] : m_waitedNs)
        sum += waited;
    return sum;
}

} // namespace support
