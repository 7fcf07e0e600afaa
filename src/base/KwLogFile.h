// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_KWLOGFILE_H
#define VIGIL_BASE_KWLOGFILE_H

#include <QObject>
#include <QString>

#include <atomic>
#include <memory>

#include "base/LogRing.h"
#include "base/Singleton.h"
#include "base/ThreadSafety.h"

QT_BEGIN_NAMESPACE
class QTimer;
QT_END_NAMESPACE

namespace base {

/// The library's log: text lines with UTC time stamps in a ring of numbered files.
///
/// The files are PREFIX_0.log, PREFIX_1.log and so on. A full ring reuses the oldest file, so the last lines
/// survive a crash and the log never outgrows its space on the disk. Programs share the ring, each with a
/// file of its own; LogRing has the rules.
///
/// Threads: any thread may append and write. Call init(), setLogDirectory() and shutdown() from one thread at
/// a time.
///
/// Failure: nothing throws. A line that cannot be written is lost. The first one is reported on Qt's debug
/// output; the log says how many there were as soon as it goes on. A removed file or directory is made again.
/// In a forked child nothing is written: the file belongs to the parent.
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
    bool isOfThisProcess() const;
    void openFirstFile(const QString& problem);
    void openFile(std::unique_ptr<platform::PrivateFile> file, const QString& reason)
        VIGIL_REQUIRES(m_bufferMutex);
    bool appendLastLine() const VIGIL_NO_THREAD_SAFETY_ANALYSIS;
    bool closeFile(const char* reason) VIGIL_REQUIRES(m_bufferMutex);
    void checkSize() VIGIL_REQUIRES(m_bufferMutex);
    void write(const QString& text) VIGIL_REQUIRES(m_bufferMutex);
    bool tryWrite(const QByteArray& bytes) VIGIL_REQUIRES(m_bufferMutex);
    void reopen() VIGIL_REQUIRES(m_bufferMutex);
    void loseLines(const QString& text) VIGIL_REQUIRES(m_bufferMutex);
    void reportProblem();
    QString textBefore() const VIGIL_REQUIRES(m_bufferMutex);

    Mutex m_bufferMutex;
    QString m_pendingText VIGIL_GUARDED_BY(m_bufferMutex);
    LogRing m_ring VIGIL_GUARDED_BY(m_bufferMutex);
    std::unique_ptr<platform::PrivateFile> m_file VIGIL_GUARDED_BY(m_bufferMutex);
    bool m_isOpen VIGIL_GUARDED_BY(m_bufferMutex) = false; // even while there is no file
    QString m_header VIGIL_GUARDED_BY(m_bufferMutex);      // first lines of the file, until they are written
    int m_lostLines VIGIL_GUARDED_BY(m_bufferMutex) = 0;
    QString m_problem VIGIL_GUARDED_BY(m_bufferMutex); // why nothing can be written; empty if it can
    bool m_isReported VIGIL_GUARDED_BY(m_bufferMutex) = false;

    std::atomic<quint32> m_process{0}; // the one that opened the log
    int m_maxSize = defaultMaxSize;
    QString m_directory;
    QTimer* m_writeTimer = nullptr;
};

} // namespace base

#endif
