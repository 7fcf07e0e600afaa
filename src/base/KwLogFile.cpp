// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/KwLogFile.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QThread>
#include <QTimer>

#include "base/BuildInfo.h"
#include "base/DebugOutput.h"
#include "base/DefaultLogDirectory.h"
#include "base/NeverDestroyed.h"
#include "base/Printable.h"
#include "platform/Platform.h"

namespace base {

namespace {

constexpr int writeIntervalMs = 6000;
constexpr const char* terminationReason = "Application termination";
constexpr const char* nextFileReason = "Next log file.";

QString timeStamp()
{
    return QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"));
}

QString headerText(const QString& reason)
{
    const QString localTime = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm"));
    return QStringLiteral("%1 Package %2, version %3, local time %4.")
        .arg(reason, QLatin1String(buildInfo::packageName()), QLatin1String(buildInfo::version()), localTime);
}

QString ordinaryLine(const QString& text)
{
    return QStringLiteral("%1: %2\n").arg(timeStamp(), text);
}

/// Many programs share a directory, so each file says whose it is.
QString processLine()
{
    return ordinaryLine(QStringLiteral("Process %1, program %2")
                            .arg(QString::number(platform::processId()), printable(platform::programPath())));
}

void report(const QString& problem)
{
    writeWarning(logCategory, QStringLiteral("KwLogFile: ") + problem);
}

QString lastLine(const QString& reason)
{
    return QStringLiteral("%1, %2\n").arg(timeStamp(), reason);
}

QString applicationPrefix()
{
    QString name = QCoreApplication::applicationName();
    if (name.isEmpty()) {
        const QString path = QCoreApplication::applicationFilePath();
        QStringList parts = path.split(QLatin1Char('/'));
        if (parts.isEmpty())
            parts = path.split(QLatin1Char('\\'));
        name = parts.last().split(QLatin1Char('.')).first();
    }
    return name.isEmpty() ? QStringLiteral("DefaultAppName") : name;
}

} // namespace

/// The object belongs to no thread: it outlives its creator, and would keep Qt's data of that thread alive.
/// Qt would then take the next runner for a secondary thread, and warn.
KwLogFile::KwLogFile()
{
    moveToThread(nullptr);
}

KwLogFile::~KwLogFile()
{
    shutdown();
}

KwLogFile& KwLogFile::instance()
{
    // Other static objects may still log while the process destroys its statics.
    static NeverDestroyed<KwLogFile> log;
    return log.get();
}

bool KwLogFile::init(QString prefix, int maxFiles, int maxSize, bool useTimer)
{
    QString problem;
    if (m_directory.isEmpty()) {
        const LogDirectoryChoice choice = defaultLogDirectory();
        m_directory = choice.directory;
        problem = choice.problem;
    }
    m_maxSize = maxSize;
    m_process = platform::processId();
    {
        const MutexLock lock(m_bufferMutex);
        m_file.reset();
        m_ring = LogRing(m_directory, prefix, maxFiles);
    }
    openFirstFile(problem);
    if (useTimer && !m_writeTimer) {
        moveToThread(QThread::currentThread());
        m_writeTimer = new QTimer(this);
        connect(m_writeTimer, SIGNAL(timeout()), this, SLOT(slot_TimerWriteFile()));
        m_writeTimer->start(writeIntervalMs);
    }
    return true;
}

bool KwLogFile::initWithApplicationName()
{
    return init(applicationPrefix(), defaultMaxFiles, defaultMaxSize, true);
}

void KwLogFile::setLogDirectory(QString directory)
{
    m_directory = directory;
    platform::makePrivateDirectory(m_directory);
}

QString KwLogFile::defaultDirectory()
{
    return defaultLogDirectory().directory;
}

bool KwLogFile::isOfThisProcess() const
{
    return m_process == 0 || m_process == platform::processId();
}

// --- Opening

void KwLogFile::openFirstFile(const QString& problem)
{
    {
        const MutexLock lock(m_bufferMutex);
        m_isOpen = true;
        m_lostLines = 0;
        m_isReported = false;
        openFile(m_ring.openFirst(), QStringLiteral("Application started."));
        if (!problem.isEmpty())
            m_header += ordinaryLine(QLatin1String("___ERROR___ ") + problem);
        write({});
    }
    if (!problem.isEmpty())
        report(problem);
    reportProblem();
}

void KwLogFile::openFile(std::unique_ptr<platform::PrivateFile> file, const QString& reason)
{
    m_file = std::move(file);
    m_header = ordinaryLine(headerText(reason));
    m_header += processLine();
    if (m_file && m_ring.hasOwnDirectory())
        m_header +=
            ordinaryLine(QStringLiteral("Other programs use all log files of the directory above this one."));
}

/// Someone removed the file or its directory, or there was none before.
void KwLogFile::reopen()
{
    const QString unwrittenHeader = m_header;
    openFile(m_ring.openFirst(), QLatin1String(nextFileReason));
    if (!unwrittenHeader.isEmpty())
        m_header = unwrittenHeader;
}

// --- Writing

void KwLogFile::appendLine(const QString& text)
{
    if (!isOfThisProcess())
        return;
    const MutexLock lock(m_bufferMutex);
    m_pendingText += ordinaryLine(text);
}

bool KwLogFile::writePending()
{
    if (!isOfThisProcess())
        return false;
    {
        const MutexLock lock(m_bufferMutex);
        if (m_isOpen)
            write(m_pendingText);
        m_pendingText.clear();
        checkSize();
    }
    reportProblem();
    return false;
}

/// Once until something can be written again. Without the lock: the host's message handler may use the
/// library.
void KwLogFile::reportProblem()
{
    QString problem;
    {
        const MutexLock lock(m_bufferMutex);
        if (m_problem.isEmpty() || m_isReported)
            return;
        m_isReported = true;
        problem = m_problem;
    }
    report(QStringLiteral("cannot write the log in %1: %2").arg(m_directory, problem));
}

/// Writes to the open file and makes the text visible to readers.
void KwLogFile::write(const QString& text)
{
    if (tryWrite((textBefore() + text).toUtf8()))
        return;
    if (!m_file) {
        reopen();
        if (m_file && tryWrite((textBefore() + text).toUtf8()))
            return;
    }
    loseLines(text);
}

/// Closes the file if it is no longer where it was: the next one to look for it would find nothing.
bool KwLogFile::tryWrite(const QByteArray& bytes)
{
    if (!m_file)
        return false;
    if (!m_file->append(bytes)) {
        m_problem = qt_error_string();
        return false;
    }
    if (!m_file->isInPlace()) {
        m_file.reset();
        return false;
    }
    m_header.clear();
    m_lostLines = 0;
    m_problem.clear();
    m_isReported = false;
    return true;
}

/// The lines due before the next one.
QString KwLogFile::textBefore() const
{
    if (m_lostLines == 0)
        return m_header;
    return m_header + ordinaryLine(QStringLiteral("___ERROR___ %1 lines could not be written: %2")
                                       .arg(QString::number(m_lostLines), m_problem));
}

void KwLogFile::loseLines(const QString& text)
{
    if (!m_file)
        m_problem = m_ring.problem();
    m_lostLines += text.count(QLatin1Char('\n'));
}

void KwLogFile::checkSize()
{
    if (!m_file || m_file->size() <= m_maxSize)
        return;
    closeFile("Reached max size, open the next log file ...");
    m_isOpen = true; // with or without a next file
    openFile(m_ring.openNext(), QLatin1String(nextFileReason));
    write({});
}

// --- Closing

bool KwLogFile::closeLogFile(const char* reason)
{
    if (!isOfThisProcess())
        return false;
    const MutexLock lock(m_bufferMutex);
    return closeFile(reason);
}

bool KwLogFile::closeFile(const char* reason)
{
    if (!m_isOpen)
        return false;
    tryWrite((textBefore() + lastLine(QString::fromUtf8(reason))).toUtf8());
    m_file.reset();
    m_isOpen = false;
    return true;
}

bool KwLogFile::shutdownWithoutOtherThreads()
{
    if (!m_bufferMutex.tryLock())
        return appendLastLine();
    const bool closed = closeFile(terminationReason);
    m_bufferMutex.unlock();
    return closed;
}

/// A thread that held the lock is gone. The file has no state such a thread could have left half changed.
bool KwLogFile::appendLastLine() const
{
    return m_file && m_file->append(lastLine(QLatin1String(terminationReason)).toUtf8());
}

bool KwLogFile::shutdown()
{
    delete m_writeTimer;
    m_writeTimer = nullptr;
    return closeLogFile(terminationReason);
}

void KwLogFile::slot_TimerWriteFile()
{
    writePending();
}

} // namespace base
