// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "vigilctl/Arguments.h"

#include <QCommandLineParser>
#include <QRegularExpression>

namespace vigilctl {

namespace {

struct CommandWord
{
    const char* word;
    Arguments::Command command;
    int arguments; ///< after the word
};

constexpr CommandWord words[] = {
    {"status", Arguments::Command::Status, 0}, {"watch", Arguments::Command::Watch, 0},
    {"mute", Arguments::Command::Mute, 2},     {"unmute", Arguments::Command::Unmute, 1},
    {"forget", Arguments::Command::Forget, 1},
};

QString readCommand(const QStringList& positional, Arguments& read)
{
    for (const CommandWord& each : words) {
        if (positional.value(0) != QLatin1String(each.word) || positional.size() != 1 + each.arguments)
            continue;
        read.command = each.command;
        read.target = positional.value(1);
        if (each.command != Arguments::Command::Mute)
            return {};
        const std::optional<int> seconds = secondsIn(positional.value(2));
        read.seconds = seconds.value_or(0);
        return seconds ? QString()
                       : QStringLiteral("mute %1: expected a time as in 30m, 2h or 7d, at most 366d")
                             .arg(positional.value(2));
    }
    return QStringLiteral(
        "expected a command: status, watch, mute CHECK TIME, unmute CHECK or forget APPLICATION");
}

void describeProgram(QCommandLineParser& parser)
{
    parser.setApplicationDescription(
        QStringLiteral("Shows the health of this host's applications, and controls its vigil-agent."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(
        QStringLiteral("command"),
        QStringLiteral("status: print what is wrong.\n"
                       "watch: the same every second.\n"
                       "mute CHECK TIME: no notifications about it, as in 30m or 2h.\n"
                       "unmute CHECK: notify of it again.\n"
                       "forget APPLICATION: remove the cells of a lost one."));
}

} // namespace

std::optional<int> secondsIn(const QString& duration)
{
    constexpr int day = 86'400;
    constexpr int longest = 366 * day;
    static const QRegularExpression form(QStringLiteral("^([0-9]{1,8})([smhd])$"));
    const QRegularExpressionMatch match = form.match(duration);
    if (!match.hasMatch())
        return std::nullopt;
    const QChar unit = match.captured(2).front();
    const int factor = unit == QLatin1Char('s')   ? 1
                       : unit == QLatin1Char('m') ? 60
                       : unit == QLatin1Char('h') ? 3600
                                                  : day;
    const qint64 seconds = match.captured(1).toLongLong() * factor;
    return seconds >= 1 && seconds <= longest ? std::optional(static_cast<int>(seconds)) : std::nullopt;
}

QString readArguments(const QStringList& arguments, Arguments& read)
{
    QCommandLineParser parser;
    describeProgram(parser);
    const QCommandLineOption url(
        QStringLiteral("url"), QStringLiteral("Ask the agent whose page is at <url>, see its option --http."),
        QStringLiteral("url"), QStringLiteral("http://127.0.0.1:43180/"));
    const QCommandLineOption control(
        QStringLiteral("control"),
        QStringLiteral("Ask the agent through its local socket <path>, see its option --control."),
        QStringLiteral("path"), QStringLiteral("/run/vigil-agent/control"));
    const QCommandLineOption json(
        QStringLiteral("json"),
        QStringLiteral(
            "Print what the agent says, in one line; for status and watch see checks.schema.json."));
    parser.addOptions({url, control, json});
    if (!parser.parse(arguments))
        return parser.errorText(); // process() would end with 1, the exit code of WARNING
    parser.process(arguments);
    read.isJson = parser.isSet(json);
    read.isUrlGiven = parser.isSet(url);
    read.isControlGiven = parser.isSet(control);
    read.url = QUrl(parser.value(url));
    read.controlPath = parser.value(control);
    if (!read.url.isValid() || read.url.scheme() != QLatin1String("http"))
        return QStringLiteral("--url: expected an address as in http://127.0.0.1:43180/");
    QString problem = readCommand(parser.positionalArguments(), read);
    if (!problem.isEmpty() || !read.isUrlGiven)
        return problem;
    if (read.isControlGiven)
        return QStringLiteral("--url and --control exclude each other");
    return read.isReport() ? QString() : QStringLiteral("--url: changes go through --control");
}

} // namespace vigilctl
