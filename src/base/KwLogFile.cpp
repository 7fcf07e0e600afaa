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
#include "base/DefaultLogDirectory.h"
#include "base/NeverDestroyed.h"

namespace base {

namespace {

constexpr int writeIntervalMs = 6000;
constexpr const char* terminationReason = "Application termination";

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

KwLogFile::KwLogFile() = default;

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
    return defaultLogDirectory();
}

int KwLogFile::numberOf(const QString& fileName, bool& isNumber) const
{
    QString number = fileName;
    number.remove(m_filePrefix + QLatin1Char('_')).remove(QLatin1String(".log"));
    return number.toInt(&isNumber);
}

/// Sets the file number so that the next file follows the newest one or, in a full ring, replaces the oldest.
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
    m_fileIndex =
        m_fileIndex >= m_maxFiles - 1 ? 0 : m_fileIndex + 1; // it may come from a file name and be too large
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

/// Writes to the open file and makes the text visible to readers.
void KwLogFile::write(const QString& text)
{
    if (!m_file->isOpen())
        return;
    m_file->write(text.toUtf8());
    m_file->flush();
    // On Windows, opening the file again updates the size in its directory entry.
    QFile reader(m_file->fileName());
    if (reader.open(QIODevice::ReadOnly))
        reader.close();
}

bool KwLogFile::checkSize()
{
    const MutexLock lock(m_bufferMutex); // all the time: a line written between two files would be lost
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

/// A thread may have ended in the middle of a write and left the open file in any state, so this opens
/// another one.
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
