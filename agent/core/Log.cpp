// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/Log.h"

#include <utility>

#include "agent/core/StandardError.h"

namespace agent::log {

namespace {

struct Level
{
    Severity severity;
    const char* priority; ///< for the journal
    const char* word;
};

constexpr Level errorLevel = {Severity::Error, "<3>", "error: "};
constexpr Level warningLevel = {Severity::Warning, "<4>", "warning: "};
constexpr Level infoLevel = {Severity::Info, "<6>", ""};
constexpr Level debugLevel = {Severity::Debug, "<7>", ""};

bool isVerboseLog = false;
quint64 lostLines = 0;
Gate gateOfUsers;
Sink otherSink;

bool isPlain(QChar character)
{
    const QChar::Category category = character.category();
    return category != QChar::Other_Control && category != QChar::Separator_Line &&
           category != QChar::Separator_Paragraph;
}

/// Texts from applications and managers appear in messages. They must not be able to forge a line, or to
/// control a terminal.
QByteArray onOneLine(const QString& message)
{
    QString line = message.trimmed();
    for (QChar& character : line) {
        if (!isPlain(character))
            character = QLatin1Char(' ');
    }
    return line.toUtf8();
}

bool tryWrite(const Level& level, const QString& message)
{
    if (otherSink)
        return otherSink(level.severity, QString::fromUtf8(onOneLine(message).left(standardError::maxLine)));
    static const bool isJournal = standardError::isJournal();
    const QByteArray line =
        QByteArray(isJournal ? level.priority : "") + "vigil-agent: " + level.word + onOneLine(message);
    return standardError::write(line.left(standardError::maxLine - 1) + '\n');
}

void writeLine(const Level& level, const QString& message)
{
    if (lostLines > 0 &&
        tryWrite(warningLevel,
                 QStringLiteral("%1 lines are missing here: standard error was not read").arg(lostLines)))
        lostLines = 0;
    if (lostLines > 0 || !tryWrite(level, message))
        ++lostLines;
}

bool isOpenFor(const User& user)
{
    return !gateOfUsers || gateOfUsers(user);
}

} // namespace

void setSink(Sink sink)
{
    otherSink = std::move(sink);
}

void setVerbose(bool isVerbose)
{
    isVerboseLog = isVerbose;
}

void setGate(Gate gate)
{
    gateOfUsers = std::move(gate);
}

void error(const QString& message)
{
    writeLine(errorLevel, message);
}

void warning(const QString& message)
{
    writeLine(warningLevel, message);
}

void warning(const User& user, const QString& message)
{
    if (isOpenFor(user))
        warning(message);
}

void info(const QString& message)
{
    writeLine(infoLevel, message);
}

void debug(const QString& message)
{
    writeLine(debugLevel, message);
}

bool isVerbose()
{
    return isVerboseLog;
}

bool isVerbose(const User& user)
{
    return isVerboseLog && isOpenFor(user);
}

} // namespace agent::log
