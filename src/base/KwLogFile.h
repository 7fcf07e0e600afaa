// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_KWLOGFILE_H
#define VIGIL_BASE_KWLOGFILE_H

#include <QFile>
#include <QObject>
#include <QString>

#include <memory>

#include "base/Singleton.h"
#include "base/ThreadSafety.h"

QT_BEGIN_NAMESPACE
class QTimer;
QT_END_NAMESPACE

namespace base {

/// The library's log: text lines with UTC time stamps in a ring of numbered files.
///
/// The files are PREFIX_0.log, PREFIX_1.log and so on. A full ring reuses the oldest file, so the last lines
/// survive a crash and the log never outgrows its space on the disk.
///
/// Threads: any thread may append and write. Call init(), setLogDirectory() and shutdown() from one thread at
/// a time.
///
/// Failure: nothing throws, and nothing is reported. Without an open file the lines are dropped.
class KwLogFile : public QObject, public Singleton<KwLogFile>
{
    Q_OBJECT

public:
    static constexpr int defaultMaxFiles = 10;
    static constexpr int defaultMaxSize = 10000000; // bytes

    KwLogFile();
    ~KwLogFile() override;

    /// The process's log. Other objects are for tests.
    static KwLogFile& instance();

    /// Opens the next file of the ring. With useTimer the event loop writes pending lines every 6 seconds;
    /// call it on the object's own thread then.
    bool init(QString prefix, int maxFiles, int maxSize, bool useTimer);

    /// Calls init() with the timer and a prefix made from the application's name.
    bool initWithApplicationName();

    /// Sets the directory and creates it.
    void setLogDirectory(QString directory);

    /// See defaultLogDirectory().
    static QString defaultDirectory();

    /// Adds one line to the pending text.
    void appendLine(const QString& text);

    /// Writes the pending text and, if the file has grown too large, starts the next one. Always returns
    /// false.
    bool writePending();

    /// Writes a last line and closes the file. Drops the pending text. False if no file is open.
    bool closeLogFile(const char* reason);

    /// Stops the timer and closes the file.
    bool shutdown();

    /// Like shutdown(), for a process whose other threads are gone. One of them may have held the lock and
    /// can no longer release it.
    bool shutdownWithoutOtherThreads();

private slots:
    void slot_TimerWriteFile();

private:
    void findFileNumber();
    int numberOf(const QString& fileName, bool& isNumber) const;
    bool openFirstFile();
    bool openNextFile(const QString& reason) VIGIL_REQUIRES(m_bufferMutex);
    bool appendLastLine() const VIGIL_NO_THREAD_SAFETY_ANALYSIS;
    bool closeFile(const char* reason) VIGIL_REQUIRES(m_bufferMutex);
    bool checkSize();
    void write(const QString& text) VIGIL_REQUIRES(m_bufferMutex);

    Mutex m_bufferMutex;
    QString m_pendingText VIGIL_GUARDED_BY(m_bufferMutex);
    std::unique_ptr<QFile> m_file VIGIL_GUARDED_BY(m_bufferMutex);

    int m_fileIndex = 0;
    int m_maxFiles = defaultMaxFiles;
    int m_maxSize = defaultMaxSize;
    QString m_directory;
    QString m_filePrefix;
    QTimer* m_writeTimer = nullptr;
};

} // namespace base

#endif
