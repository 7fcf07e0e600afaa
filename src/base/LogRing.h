// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_LOGRING_H
#define VIGIL_BASE_LOGRING_H

#include <QString>

#include <memory>

#include "platform/Platform.h"

namespace base {

/// The numbered files of a log, which any number of programs share.
///
/// A program locks the file it writes. Others leave a locked file out of the ring: they skip its number, and
/// neither the oldest nor the newest file is a locked one. While all files are locked, a program uses a ring
/// in a directory of its own below this one.
///
/// Threads: one at a time.
class LogRing
{
public:
    LogRing() = default;
    LogRing(QString directory, QString prefix, int maxFiles);

    /// Opens the file after the newest one or, in a full ring, the oldest. Locked and empty; null on failure.
    std::unique_ptr<platform::PrivateFile> openFirst();

    /// Opens the file after the one before.
    std::unique_ptr<platform::PrivateFile> openNext();

    /// Why the last file could not be opened.
    QString problem() const { return m_problem; }

    /// The directory of the last file. Not the given one if all files there are in use.
    QString directory() const { return m_directory; }
    bool hasOwnDirectory() const { return m_directory != m_sharedDirectory; }

private:
    std::unique_ptr<platform::PrivateFile> openFirstIn(const QString& directory);
    std::unique_ptr<platform::PrivateFile> openNumber(int number);
    void findFileNumber();
    bool isFree(const QString& path) const;
    int numberOf(const QString& fileName, bool& isNumber) const;

    QString m_sharedDirectory;
    QString m_directory;
    QString m_prefix;
    int m_maxFiles = 0;
    int m_fileIndex = 0;
    bool m_isTaken = false; // by other programs or users
    QString m_problem;
};

} // namespace base

#endif
