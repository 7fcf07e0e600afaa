// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/DefaultLogDirectory.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QStringList>

#include "base/BuildInfo.h"

namespace base {

namespace {

constexpr qint64 maxStartRecordSize = 10000; // bytes

QString packageName()
{
    return QLatin1String(buildInfo::packageName());
}

/// Tries to write in directory, by adding a line to the start record there. Rejects a relative path: it would
/// create directories in the host's current directory.
bool writeStartRecord(const QString& directory)
{
    if (!QDir::isAbsolutePath(directory) || !QDir().mkpath(directory))
        return false;
    QFile record(QDir(directory).absolutePath() + QLatin1Char('/') + packageName() + QLatin1String("_start"));
    if (record.exists() && record.size() > maxStartRecordSize && !record.remove())
        return false;
    if (!record.open(QIODevice::Append))
        return false;
    record.write(QStringLiteral("Started: %1\n").arg(QDateTime::currentDateTime().toString()).toUtf8());
    return true;
}

QString productDirectory()
{
    QString preferred = QStringLiteral("D:/OrvanData");
    QString second = QStringLiteral("C:/OrvanData");
    if (QDir::isAbsolutePath(preferred) && !QDir(preferred).exists() && QDir(second).exists())
        return second;
    return preferred;
}

QStringList candidateDirectories()
{
    const QString logging = QLatin1String("/Logging/") + packageName();
    return {qEnvironmentVariable("VIGIL_LOG_DIR"), productDirectory() + logging,
            QLatin1String("C:/OrvanData") + logging, QDir::tempPath() + QLatin1String("/OrvanData") + logging,
            QDir::tempPath() + QLatin1Char('/') + packageName()};
}

} // namespace

QString defaultLogDirectory()
{
    for (const QString& candidate : candidateDirectories()) {
        if (writeStartRecord(candidate))
            return candidate;
    }
    return QDir::tempPath();
}

} // namespace base
