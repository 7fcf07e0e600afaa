// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/StateLock.h"

#include <QDeadlineTimer>
#include <QThread>

#include "agent/core/Log.h"

namespace agent {

namespace {

constexpr qint64 endingMs = 2'000;
constexpr unsigned long betweenTriesMs = 20;

} // namespace

Error StateLock::take(const QString& directory)
{
    const QString path = directory + QStringLiteral("/lock");
    const QDeadlineTimer deadline(endingMs);
    QString reason;
    Outcome outcome = tryToTake(path, reason);
    while (outcome == Outcome::Held && !deadline.hasExpired()) {
        QThread::msleep(betweenTriesMs);
        outcome = tryToTake(path, reason);
    }
    if (outcome == Outcome::Held)
        return Error(QStringLiteral("another agent uses the state directory %1. Stop it, or choose another "
                                    "directory with --state-directory")
                         .arg(directory));
    if (outcome == Outcome::Impossible)
        log::warning(QStringLiteral("cannot lock the state directory %1: %2. Make sure that no other agent "
                                    "uses it")
                         .arg(directory, reason));
    return {};
}

} // namespace agent
