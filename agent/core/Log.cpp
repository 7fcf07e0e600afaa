// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/Log.h"

#include <cstdio>

namespace agent::log {

namespace {

bool isVerboseLog = false;

/// Texts from applications and managers appear in messages. They must not be able to forge a line.
QByteArray onOneLine(const QString& message)
{
    QByteArray line = message.trimmed().toUtf8();
    for (char& byte : line) {
        if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f)
            byte = ' ';
    }
    return line;
}

void writeLine(const char* level, const QString& message)
{
    const QByteArray line = "vigil-agent: " + QByteArray(level) + onOneLine(message) + '\n';
    std::fwrite(line.constData(), 1, static_cast<size_t>(line.size()), stderr);
    std::fflush(stderr);
}

} // namespace

void setVerbose(bool isVerbose)
{
    isVerboseLog = isVerbose;
}

void error(const QString& message)
{
    writeLine("error: ", message);
}

void warning(const QString& message)
{
    writeLine("warning: ", message);
}

void info(const QString& message)
{
    writeLine("", message);
}

bool isVerbose()
{
    return isVerboseLog;
}

} // namespace agent::log
