// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_ARGUMENTS_H
#define VIGILCTL_ARGUMENTS_H

#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace vigilctl {

/// The command line.
struct Arguments
{
    enum class Command { Status, Watch, Mute, Unmute, Forget };

    Command command = Command::Status;
    QString target;          ///< the check or application to change
    int seconds = 0;         ///< of a mute
    bool isJson = false;     ///< print the reply as it is
    bool isUrlGiven = false; ///< ask over HTTP, even if there is a socket
    bool isControlGiven = false;
    QUrl url;
    QString controlPath;

    bool isReport() const { return command == Command::Status || command == Command::Watch; }
};

/// Returns the mistake in the arguments, or an empty text. Exits after --help and --version.
QString readArguments(const QStringList& arguments, Arguments& read);

/// The seconds in a text such as 90s, 30m, 2h or 7d. Nothing for another text, or outside of 1 s to 366 d.
std::optional<int> secondsIn(const QString& duration);

} // namespace vigilctl

#endif
