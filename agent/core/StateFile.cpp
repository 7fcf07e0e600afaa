// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/StateFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>

namespace agent {

namespace {

const QString lastLine = QStringLiteral("end");
constexpr qint64 longestFile = 100'000'000;

} // namespace

Error StateFile::read(QStringList& lines) const
{
    lines.clear();
    QFile file(m_path);
    if (m_path.isEmpty() || !file.exists())
        return {};
    const bool isFile = QFileInfo(file).isFile(); // a pipe would block the agent
    if (!isFile || !file.open(QIODevice::ReadOnly))
        return Error(QStringLiteral("cannot read the state file %1: %2")
                         .arg(m_path, isFile ? file.errorString() : QStringLiteral("it is not a file")));
    if (file.size() > longestFile)
        return damaged(QStringLiteral("it is too long"));
    QStringList read = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    if (read.size() < 3 || read.takeFirst() != firstLine())
        return damaged(QStringLiteral("its first line is not \"%1\"").arg(firstLine()));
    if (!read.takeLast().isEmpty() || read.takeLast() != lastLine)
        return damaged(QStringLiteral("it is cut short"));
    lines = read;
    return {};
}

Error StateFile::write(const QStringList& lines) const
{
    if (m_path.isEmpty())
        return {};
    QSaveFile file(m_path); // a temporary file, flushed to the disk and renamed
    const auto writeLine = [&file](const QString& line) { file.write((line + QLatin1Char('\n')).toUtf8()); };
    if (file.open(QIODevice::WriteOnly)) {
        writeLine(firstLine());
        std::for_each(lines.begin(), lines.end(), writeLine);
        writeLine(lastLine);
        // commit() does not notice if the last block cannot be written, and would leave an empty file.
        if (file.flush() && file.commit())
            return {};
    }
    return Error(QStringLiteral("cannot write the state file %1: %2. A restart of the agent forgets what is "
                                "not saved")
                     .arg(m_path, file.errorString()));
}

Error StateFile::damaged(const QString& why) const
{
    return Error(
        QStringLiteral("the state file %1 cannot be used: %2. It will be replaced").arg(m_path, why));
}

Error StateFile::partlyDamaged(int lines, int first) const
{
    return Error(
        QStringLiteral("%1 lines of the state file %2 cannot be used, the first is line %3; the agent "
                       "goes on with the others")
            .arg(lines)
            .arg(m_path)
            .arg(first));
}

} // namespace agent
