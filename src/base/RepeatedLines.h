// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_REPEATEDLINES_H
#define VIGIL_BASE_REPEATEDLINES_H

#include <QHash>
#include <QObject>
#include <QString>

#include <functional>

namespace base {

/// Keeps a peer that sends garbage without end from filling the log.
///
/// The first ten lines of a kind are written at once. While more of its kind follow, one line a second says
/// how many were left out. Lines that differ in nothing but their numbers are of one kind.
///
/// Threads: lives in one thread, whose event loop must run.
class RepeatedLines : public QObject
{
    Q_OBJECT

public:
    using Write = std::function<void(const QString&)>;

    static constexpr int defaultIntervalMs = 1000;
    static constexpr int maxLines = 10; ///< of a kind, until an interval without it

    explicit RepeatedLines(Write write, QObject* parent = nullptr, int intervalMs = defaultIntervalMs);

    void write(const QString& text);

    /// Says immediately how many lines were left out.
    void finish();

private:
    void writeOrCount(const QString& text);

    struct Kind
    {
        QString latest;
        int written = 0;
        int leftOut = 0;
    };

    void watch(const QString& kind);
    void endInterval(const QString& kind);
    void reportLeftOut(const Kind& kind);

    const Write m_write;
    const int m_intervalMs;
    QHash<QString, Kind> m_kinds; // seen during the last interval
};

} // namespace base

#endif
