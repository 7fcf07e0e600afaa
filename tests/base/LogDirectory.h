// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_BASE_LOGDIRECTORY_H
#define VIGIL_TESTS_BASE_LOGDIRECTORY_H

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <string>
#include <thread>
#include <vector>

/// A directory for one test's log files, and ways to look at them and to put older ones there.
class LogDirectory
{
public:
    QString path(const QString& name = QString()) const
    {
        return name.isEmpty() ? m_directory.path() : m_directory.filePath(name);
    }

    QStringList files() const { return QDir(path()).entryList(QDir::Files, QDir::Name); }

    QByteArray content(const QString& name) const
    {
        QFile file(path(name));
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }

    /// The lines of a file without their line feeds.
    std::vector<std::string> lines(const QString& name) const
    {
        std::vector<std::string> result;
        for (const QByteArray& line : content(name).split('\n'))
            result.push_back(line.toStdString());
        if (!result.empty() && result.back().empty())
            result.pop_back(); // the part after the last line feed
        return result;
    }

    void put(const QString& name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        file.open(QIODevice::WriteOnly);
        file.write(bytes);
    }

    /// A log file from an earlier run, last written so many minutes ago.
    void putOld(const QString& name, int minutesAgo) const
    {
        put(name, "old\n");
        setAge(name, minutesAgo);
    }

    void setAge(const QString& name, int minutesAgo) const
    {
        QFile file(path(name));
        file.open(QIODevice::ReadWrite);
        file.setFileTime(QDateTime::currentDateTime().addSecs(-60 * minutesAgo),
                         QFileDevice::FileModificationTime);
    }

private:
    QTemporaryDir m_directory;
};

/// Calls write("thread T line L") for 1000 lines in each of 8 threads at once, and returns all the texts.
template <typename Write>
std::vector<std::string> writeFromManyThreads(Write write)
{
    std::vector<std::string> texts;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([thread, &write] {
            for (int line = 0; line < 1000; ++line)
                write(QStringLiteral("thread %1 line %2").arg(thread).arg(line));
        });
        for (int line = 0; line < 1000; ++line)
            texts.push_back("thread " + std::to_string(thread) + " line " + std::to_string(line));
    }
    for (std::thread& thread : threads)
        thread.join();
    return texts;
}

#endif
