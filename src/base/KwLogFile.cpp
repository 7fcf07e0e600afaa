// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/KwLogFile.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QFileInfoList>
#include <QTimer>

#include "base/BuildInfo.h"
#include "base/NeverDestroyed.h"

namespace base {

namespace {

constexpr int writeIntervalMs = 6000;
constexpr qint64 maxStartRecordSize = 10000; // bytes
constexpr const char* terminationReason = "Application termination";

QString packageName()
{
    return QLatin1String(buildInfo::packageName());
}

QString timeStamp()
{
    return QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"));
}

QString headerText(const QString& reason)
{
    const QString localTime = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm"));
    return QStringLiteral("%1 Package %2, version %3, local time %4.")
        .arg(reason, packageName(), QLatin1String(buildInfo::version()), localTime);
}

QString lastLine(const QString& reason)
{
    return QStringLiteral("%1, %2\n").arg(timeStamp(), reason);
}

/// Tells whether files can be written in directory, by writing the note that the log was started. A relative
/// path is refused: it would leave directories wherever the host process happens to stand.
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

KwLogFile::KwLogFile() = default;

KwLogFile::~KwLogFile()
{
    shutdown();
}

KwLogFile& KwLogFile::instance()
{
    // Whoever stops the library at the end of the process closes the file; until the very end somebody may
    // log.
    static NeverDestroyed<KwLogFile> log;
    return log.get();
}

bool KwLogFile::init(QString prefix, int maxFiles, int maxSize, bool useTimer)
{
    if (m_directory.isEmpty())
        m_directory = defaultDirectory();
    m_filePrefix = prefix;
    m_maxFiles = maxFiles;
    m_maxSize = maxSize;
    findFileNumber();
    const bool opened = openFirstFile();
    if (useTimer && !m_writeTimer) {
        m_writeTimer = new QTimer(this);
        connect(m_writeTimer, SIGNAL(timeout()), this, SLOT(slot_TimerWriteFile()));
        m_writeTimer->start(writeIntervalMs);
    }
    return opened;
}

bool KwLogFile::initWithApplicationName()
{
    return init(applicationPrefix(), defaultMaxFiles, defaultMaxSize, true);
}

void KwLogFile::setLogDirectory(QString directory)
{
    m_directory = directory;
    QDir().mkpath(m_directory);
}

QString KwLogFile::defaultDirectory()
{
    for (const QString& candidate : candidateDirectories()) {
        if (writeStartRecord(candidate))
            return candidate;
    }
    return QDir::tempPath();
}

int KwLogFile::numberOf(const QString& fileName, bool& isNumber) const
{
    QString number = fileName;
    number.remove(m_filePrefix + QLatin1Char('_')).remove(QLatin1String(".log"));
    return number.toInt(&isNumber);
}

/// Sets the file number such that the next file follows the newest one, or takes the place of the oldest one
/// when the ring is full.
void KwLogFile::findFileNumber()
{
    const QFileInfoList files =
        QDir(m_directory).entryInfoList({m_filePrefix + QLatin1String("*.log")}, QDir::Files, QDir::Time);
    bool isNumber = false;
    if (files.isEmpty()) {
        m_fileIndex = m_maxFiles;
    } else if (files.size() >= m_maxFiles) {
        const QFileInfo& oldest = files.last();
        int number = numberOf(oldest.fileName(), isNumber);
        if (!isNumber) {
            QFile::remove(oldest.absoluteFilePath());
            number = 0;
        }
        m_fileIndex = number == 0 ? m_maxFiles : number - 1;
    } else {
        const int number = numberOf(files.first().fileName(), isNumber);
        m_fileIndex = isNumber ? number : files.size() - 1;
    }
}

bool KwLogFile::openFirstFile()
{
    const MutexLock lock(m_bufferMutex);
    return openNextFile(QStringLiteral("Application started."));
}

bool KwLogFile::openNextFile(const QString& reason)
{
    m_fileIndex = m_fileIndex >= m_maxFiles - 1 ? 0 : m_fileIndex + 1; // the number came from a file name
    m_file = std::make_unique<QFile>(
        QStringLiteral("%1/%2_%3.log").arg(m_directory, m_filePrefix, QString::number(m_fileIndex)));
    m_file->open(QIODevice::ReadWrite | QIODevice::Truncate);
    write(QStringLiteral("%1: %2\n").arg(timeStamp(), headerText(reason)));
    return true;
}

void KwLogFile::appendLine(const QString& text)
{
    const MutexLock lock(m_bufferMutex);
    m_pendingText += timeStamp() + QLatin1String(": ") + text + QLatin1Char('\n');
}

bool KwLogFile::writePending()
{
    {
        const MutexLock lock(m_bufferMutex);
        if (m_file)
            write(m_pendingText);
        m_pendingText.clear();
    }
    return checkSize();
}

/// Writes to the open file and makes the text visible to whoever reads along.
void KwLogFile::write(const QString& text)
{
    if (!m_file->isOpen())
        return;
    m_file->write(text.toUtf8());
    m_file->flush();
    // Opening the file anew makes every system bring its directory entry, and so the size that others see, up
    // to date.
    QFile reader(m_file->fileName());
    if (reader.open(QIODevice::ReadOnly))
        reader.close();
}

bool KwLogFile::checkSize()
{
    const MutexLock lock(m_bufferMutex); // held throughout: a line written between two files would be lost
    if (m_file && m_file->size() > m_maxSize) {
        closeFile("Reached max size, open the next log file ...");
        openNextFile(QStringLiteral("Next log file."));
    }
    return false;
}

bool KwLogFile::closeLogFile(const char* reason)
{
    const MutexLock lock(m_bufferMutex);
    return closeFile(reason);
}

bool KwLogFile::closeFile(const char* reason)
{
    if (!m_file)
        return false;
    write(lastLine(QString::fromUtf8(reason)));
    m_file.reset();
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

/// A thread that is no more was writing, and the open file is in whatever state it left it in. A file object
/// of its own does not touch that.
bool KwLogFile::appendLastLine() const
{
    if (!m_file)
        return false;
    QFile file(m_file->fileName());
    return file.open(QIODevice::Append) &&
           file.write(lastLine(QLatin1String(terminationReason)).toUtf8()) > 0;
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
