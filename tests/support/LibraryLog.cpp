// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "support/LibraryLog.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>

namespace support {

namespace {

constexpr int timeStampSize = 25; // "yyyy-MM-dd hh:mm:ss.zzz: "

QDir logDirectory()
{
    static const QTemporaryDir directory;
    return QDir(directory.path());
}

} // namespace

LibraryLog::LibraryLog()
{
    QDir directory = logDirectory();
    for (const QString& name : directory.entryList(QDir::Files))
        directory.remove(name);
    qputenv("VIGIL_LOG_DIR", directory.path().toUtf8());
}

std::vector<std::string> LibraryLog::lines() const
{
    std::vector<std::string> lines;
    const QDir directory = logDirectory();
    for (const QString& name : directory.entryList({QStringLiteral("*.log")}, QDir::Files, QDir::Name)) {
        QFile file(directory.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray& line : file.readAll().split('\n'))
            lines.push_back(line.mid(timeStampSize).toStdString());
    }
    return lines;
}

int LibraryLog::count(const std::string& text) const
{
    const std::vector<std::string> all = lines();
    return static_cast<int>(std::count_if(all.begin(), all.end(), [&](const std::string& line) {
        return line.find(text) != std::string::npos;
    }));
}

bool LibraryLog::waitFor(const std::string& text, int timeoutMs) const
{
    constexpr int pollMs = 2;
    const QDeadlineTimer deadline(timeoutMs);
    while (!contains(text)) {
        if (deadline.hasExpired())
            return false;
        QThread::msleep(pollMs);
    }
    return true;
}

} // namespace support
