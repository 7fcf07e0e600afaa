// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/DefaultLogDirectory.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QStringList>

#include "base/BuildInfo.h"
#include "base/Printable.h"
#include "platform/Platform.h"

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
    if (!QDir::isAbsolutePath(directory) || !platform::makePrivateDirectory(directory))
        return false;
    const QString path =
        QDir(directory).absolutePath() + QLatin1Char('/') + packageName() + QLatin1String("_start");
    QFile old(path);
    if (old.exists() && old.size() > maxStartRecordSize && !old.remove())
        return false;
    const auto record = platform::PrivateFile::open(path);
    if (record)
        record->append(QStringLiteral("Started: %1\n").arg(QDateTime::currentDateTime().toString()).toUtf8());
    return record != nullptr;
}

QString productDirectory()
{
    QString preferred = QStringLiteral("D:/OrvanData");
    QString second = QStringLiteral("C:/OrvanData");
    if (QDir::isAbsolutePath(preferred) && !QDir(preferred).exists() && QDir(second).exists())
        return second;
    return preferred;
}

QString temporaryDirectory()
{
    return platform::isSetUserId() ? QStringLiteral("/tmp") : QDir::tempPath();
}

/// Other users may have taken the first names in a shared temporary directory.
QStringList candidateDirectories(const QString& temporary)
{
    const QString logging = QLatin1String("/Logging/") + packageName();
    const QString ownName = temporary + QLatin1Char('/') + packageName();
    QStringList candidates{productDirectory() + logging, QLatin1String("C:/OrvanData") + logging,
                           temporary + QLatin1String("/OrvanData") + logging, ownName};
    if (platform::isSharedDirectory(temporary))
        candidates += ownName + QLatin1String("-user") + platform::userId();
    return candidates;
}

QString chooseDirectory()
{
    QString temporary = temporaryDirectory();
    for (const QString& candidate : candidateDirectories(temporary)) {
        if (writeStartRecord(candidate))
            return candidate;
    }
    return temporary;
}

/// Empty if VIGIL_LOG_DIR can be used.
QString problemOf(const QString& wanted)
{
    if (platform::isSetUserId())
        return QStringLiteral("the program is set-user-id");
    if (!QDir::isAbsolutePath(wanted))
        return QStringLiteral("the path is not absolute");
    return writeStartRecord(wanted) ? QString() : qt_error_string();
}

} // namespace

LogDirectoryChoice defaultLogDirectory()
{
    const QString wanted = qEnvironmentVariable("VIGIL_LOG_DIR");
    if (wanted.isEmpty())
        return {chooseDirectory(), {}};
    const QString problem = problemOf(wanted);
    if (problem.isEmpty())
        return {wanted, {}};
    const QString instead = chooseDirectory();
    return {instead, QStringLiteral("VIGIL_LOG_DIR is \"%1\", which cannot be used: %2. The log is in %3.")
                         .arg(printable(wanted), problem, instead)};
}

} // namespace base
