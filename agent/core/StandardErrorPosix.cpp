// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/StandardError.h"

#include <cerrno>
#include <cstdio>

#include <climits>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace agent::standardError {

static_assert(maxLine <= PIPE_BUF, "poll() promises room for that many bytes");

bool write(const QByteArray& line)
{
    // Not O_NONBLOCK: other programs, such as the shell, may share this end.
    pollfd output = {STDERR_FILENO, POLLOUT, 0};
    if (poll(&output, 1, 0) != 1 || (output.revents & POLLOUT) == 0)
        return false;
    const auto size = static_cast<size_t>(line.size());
    ssize_t written = send(STDERR_FILENO, line.constData(), size, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (written < 0 && errno == ENOTSOCK)
        written = ::write(STDERR_FILENO, line.constData(), size);
    return written == line.size();
}

void waitUntilWritten() {} // write() has passed everything on

bool isJournal()
{
    struct stat info = {};
    if (fstat(STDERR_FILENO, &info) != 0)
        return false;
    const QByteArray own = QByteArray::number(static_cast<quint64>(info.st_dev)) + ':' +
                           QByteArray::number(static_cast<quint64>(info.st_ino));
    return qgetenv("JOURNAL_STREAM") == own;
}

} // namespace agent::standardError

namespace agent {

Error standardOutput::print(const QString& text)
{
    if (std::fputs(text.toLocal8Bit().constData(), stdout) >= 0 && std::fflush(stdout) == 0)
        return {};
    return Error(QStringLiteral("cannot write to standard output: %1").arg(qt_error_string()));
}

} // namespace agent
