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
/// Purpose: keeps the last lines whatever happens to the process, within a fixed space on the disk. Files are
/// named PREFIX_0.log, PREFIX_1.log, …; the one after the newest is overwritten next. The directory is the
/// first one of defaultDirectory()'s list in which a file can be written.
///
/// Threads: any thread may append and write. init(), setLogDirectory() and shutdown() belong to one thread at
/// a time.
///
/// Ownership: instance() is the process's log; other objects are for tests.
///
/// Failure: nothing throws and nothing is reported. Without an open file the lines are dropped.
class KwLogFile : public QObject, public Singleton<KwLogFile>
{
    Q_OBJECT

public:
    static constexpr int defaultMaxFiles = 10;
    static constexpr int defaultMaxSize = 10000000; // bytes

    KwLogFile();
    ~KwLogFile() override;

    static KwLogFile& instance();

    /// Opens the next file of the ring. With useTimer pending lines are written every 6 seconds by the event
    /// loop of the calling thread, which must be the object's own.
    bool init(QString prefix, int maxFiles, int maxSize, bool useTimer);

    /// init() with a prefix made from the application's name, and the timer.
    bool initWithApplicationName();

    /// Sets the directory and creates it.
    void setLogDirectory(QString directory);

    /// The first usable directory of the list: VIGIL_LOG_DIR, the product's data directories, the temporary
    /// directory.
    static QString defaultDirectory();

    /// Adds one line to the pending text.
    void appendLine(const QString& text);

    /// Writes the pending text, and starts the next file when this one has grown too large. Returns false.
    bool writePending();

    /// Writes a last line and closes the file. False when none is open. Pending text is not written.
    bool closeLogFile(const char* reason);

    /// Ends the timer and closes the file.
    bool shutdown();

    /// Writes the last line in a process that has lost its other threads, one of which may have had the lock,
    /// which nobody will ever give back.
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
