// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/LogRing.h"

#include <QDir>
#include <QFileInfoList>

#include <algorithm>

namespace base {

namespace {

constexpr int maxOwnDirectories = 100; // for programs of one name that run at the same time

/// Programs of the same name share these, too.
QString ownDirectory(const QString& shared, int number)
{
    const QString program = QFileInfo(platform::programPath()).completeBaseName();
    const QString name = program.isEmpty() ? QStringLiteral("program") : program;
    const QString suffix = number == 1 ? QString() : QStringLiteral("-%1").arg(number);
    return shared + QLatin1Char('/') + name + suffix;
}

} // namespace

LogRing::LogRing(QString directory, QString prefix, int maxFiles)
    : m_sharedDirectory(std::move(directory)),
      m_directory(m_sharedDirectory),
      m_prefix(std::move(prefix)),
      m_maxFiles(maxFiles)
{}

std::unique_ptr<platform::PrivateFile> LogRing::openFirst()
{
    auto file = openFirstIn(m_sharedDirectory);
    for (int number = 1; !file && m_isTaken && number <= maxOwnDirectories; ++number)
        file = openFirstIn(ownDirectory(m_sharedDirectory, number));
    return file;
}

std::unique_ptr<platform::PrivateFile> LogRing::openFirstIn(const QString& directory)
{
    m_directory = directory;
    m_isTaken = false;
    if (!platform::makePrivateDirectory(directory)) {
        m_problem = qt_error_string();
        m_isTaken = QFileInfo::exists(directory);
        return nullptr;
    }
    findFileNumber();
    return openNext();
}

std::unique_ptr<platform::PrivateFile> LogRing::openNext()
{
    std::unique_ptr<platform::PrivateFile> file;
    for (int tries = (std::max)(m_maxFiles, 1); !file && tries > 0; --tries) {
        // The number may come from a file name and be too large.
        m_fileIndex = m_fileIndex >= m_maxFiles - 1 ? 0 : m_fileIndex + 1;
        file = openNumber(m_fileIndex);
    }
    return file;
}

/// Empties the file only once it is locked: until then it may be another program's.
std::unique_ptr<platform::PrivateFile> LogRing::openNumber(int number)
{
    const QString path = QStringLiteral("%1/%2_%3.log").arg(m_directory, m_prefix, QString::number(number));
    auto file = platform::PrivateFile::open(path);
    if (!file) {
        m_problem = qt_error_string();
        const QFileInfo obstacle(path);
        m_isTaken = m_isTaken || obstacle.exists() || obstacle.isSymLink();
        return nullptr;
    }
    // In the meantime another program may have removed it.
    if (file->lock() && file->isInPlace() && file->clear())
        return file;
    m_problem = qt_error_string();
    m_isTaken = true;
    return nullptr;
}

int LogRing::numberOf(const QString& fileName, bool& isNumber) const
{
    QString number = fileName;
    number.remove(m_prefix + QLatin1Char('_')).remove(QLatin1String(".log"));
    return number.toInt(&isNumber);
}

bool LogRing::isFree(const QString& path) const
{
    const auto file = platform::PrivateFile::open(path);
    return file && file->lock();
}

/// Sets the file number so that the next file follows the newest one or, in a full ring, replaces the oldest.
void LogRing::findFileNumber()
{
    QFileInfoList files =
        QDir(m_directory).entryInfoList({m_prefix + QLatin1String("*.log")}, QDir::Files, QDir::Time);
    const int count = files.size();
    const auto isLocked = [this](const QFileInfo& file) { return !isFree(file.absoluteFilePath()); };
    files.erase(std::remove_if(files.begin(), files.end(), isLocked), files.end());
    bool isNumber = false;
    if (files.isEmpty()) {
        m_fileIndex = m_maxFiles;
    } else if (count >= m_maxFiles) {
        const QFileInfo& oldest = files.last();
        int number = numberOf(oldest.fileName(), isNumber);
        if (!isNumber) {
            QFile::remove(oldest.absoluteFilePath());
            number = 0;
        }
        m_fileIndex = number == 0 ? m_maxFiles : number - 1;
    } else {
        const int number = numberOf(files.first().fileName(), isNumber);
        m_fileIndex = isNumber ? number : count - 1;
    }
}

} // namespace base
