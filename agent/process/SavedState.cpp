// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/SavedState.h"

#include <optional>

namespace agent {

namespace {

const QString lostWord = QStringLiteral("lost");
const QString connectedWord = QStringLiteral("connected");
const QString checkWord = QStringLiteral("check");
const QString notifiedWord = QStringLiteral("notified");
const QString mutedWord = QStringLiteral("muted");
const QString forgottenWord = QStringLiteral("forgotten");
const QString unknownUser = QStringLiteral("unknown");
constexpr qint64 msPerSecond = 1000;

/// A text as one word of a line.
QString word(const QByteArray& text)
{
    return QString::fromLatin1(text.toPercentEncoding());
}

QByteArray textOf(const QString& word)
{
    return QByteArray::fromPercentEncoding(word.toLatin1());
}

std::optional<ObjectId> indexOf(const QString& word)
{
    return fromFullText(word.toStdString());
}

std::optional<int> statusOf(const QString& word)
{
    bool isNumber = false;
    const int status = word.toInt(&isNumber);
    return isNumber && status >= 0 && status <= 3 ? std::optional(status) : std::nullopt;
}

QString lineOf(const QStringList& words)
{
    return words.join(QLatin1Char(' '));
}

QString checkLine(const QString& firstWord, const LostCheck& check)
{
    return lineOf({firstWord, QString::number(check.status), toText(check.check),
                   word(QByteArray::fromStdString(check.summary))});
}

QString applicationLine(const ApplicationInfo& info)
{
    const Identity& identity = info.identity;
    const bool isLost = info.state == ApplicationInfo::State::Lost;
    return lineOf({isLost ? lostWord : connectedWord, info.since.toString(Qt::ISODate),
                   identity.user ? QString::fromStdString(*identity.user) : unknownUser,
                   QString::number(identity.process), info.address.toString(), QString::number(info.port),
                   word(identity.program.toUtf8())});
}

std::optional<SavedApplication> parsed(const QStringList& words)
{
    bool isProcess = false;
    bool isPort = false;
    SavedApplication saved;
    ApplicationInfo& info = saved.info;
    info.state = words[0] == lostWord ? ApplicationInfo::State::Lost : ApplicationInfo::State::Connected;
    info.since = QDateTime::fromString(words[1], Qt::ISODate);
    if (platform::isUserId(words[2].toStdString()))
        info.identity.user = words[2].toStdString();
    info.identity.process = words[3].toUInt(&isProcess);
    info.address = QHostAddress(words[4]);
    info.port = words[5].toUShort(&isPort);
    info.identity.program = QString::fromUtf8(textOf(words[6]));
    const bool isValid = info.since.isValid() && (info.identity.user || words[2] == unknownUser) &&
                         isProcess && isPort && !info.address.isNull();
    return isValid ? std::optional(saved) : std::nullopt;
}

} // namespace

QStringList SavedState::toLines() const
{
    QStringList lines;
    for (const SavedApplication& application : applications) {
        lines.append(applicationLine(application.info));
        for (const LostCheck& check : application.checks)
            lines.append(checkLine(checkWord, check));
    }
    for (const auto& [check, status] : notified)
        lines.append(lineOf({notifiedWord, QString::number(status), toText(check)}));
    for (const auto& [check, mute] : mutes)
        lines.append(lineOf({mutedWord, mute.until.toString(Qt::ISODate),
                             QString::number((mute.forMs + msPerSecond - 1) / msPerSecond), toText(check)}));
    for (const LostCheck& check : forgotten)
        lines.append(checkLine(forgottenWord, check));
    return lines;
}

SavedState::Wrong SavedState::readLines(const QStringList& lines)
{
    Wrong wrong;
    for (int i = 0; i < lines.size(); ++i) {
        if (!readLine(lines[i].split(QLatin1Char(' '))) && wrong.lines++ == 0)
            wrong.first = i + 2; // the file has a line before
    }
    return wrong;
}

bool SavedState::readApplication(const QStringList& words)
{
    const std::optional<SavedApplication> application = words.size() == 7 ? parsed(words) : std::nullopt;
    m_hasApplication = application.has_value();
    if (application)
        applications.push_back(*application);
    return m_hasApplication;
}

bool SavedState::readMute(const QStringList& words)
{
    const std::optional<ObjectId> index = words.size() == 4 ? indexOf(words[3]) : std::nullopt;
    const QDateTime until = QDateTime::fromString(words.value(1), Qt::ISODate);
    const uint seconds = words.value(2).toUInt(); // 0 if it is no number
    if (!index || !until.isValid() || seconds == 0)
        return false;
    mutes[*index] = {until, seconds * msPerSecond};
    return true;
}

/// A line that starts as "check" does.
bool SavedState::readCheck(const QStringList& words)
{
    const std::optional<int> status = statusOf(words.value(1));
    const std::optional<ObjectId> index = indexOf(words.value(2));
    if (!status || !index || words.size() != (words[0] == notifiedWord ? 3 : 4))
        return false;
    if (words[0] == notifiedWord) {
        notified[*index] = *status;
        return true;
    }
    const LostCheck check = {*index, *status, textOf(words[3]).toStdString()};
    if (words[0] == forgottenWord)
        forgotten.push_back(check);
    else if (words[0] == checkWord && m_hasApplication)
        applications.back().checks.push_back(check);
    else
        return false;
    return true;
}

bool SavedState::readLine(const QStringList& words)
{
    if (words[0] == lostWord || words[0] == connectedWord)
        return readApplication(words);
    return words[0] == mutedWord ? readMute(words) : readCheck(words);
}

} // namespace agent
