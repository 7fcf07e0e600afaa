// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/StateLock.h"

#include <QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace agent {

StateLock::~StateLock()
{
    if (m_file != none)
        close(static_cast<int>(m_file));
}

/// The file is closed to other users, who could lock it otherwise. Opening it must neither follow a link nor
/// wait for the other end of a pipe.
StateLock::Outcome StateLock::tryToTake(const QString& path, QString& reason)
{
    constexpr int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    const int file = open(QFile::encodeName(path).constData(), flags, S_IRUSR | S_IWUSR);
    if (file >= 0 && flock(file, LOCK_EX | LOCK_NB) == 0) {
        m_file = file;
        return Outcome::Taken;
    }
    const int error = errno;
    if (file >= 0)
        close(file);
    reason = qt_error_string(error);
    return error == EWOULDBLOCK ? Outcome::Held : Outcome::Impossible;
}

} // namespace agent
