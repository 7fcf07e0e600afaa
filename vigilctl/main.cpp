// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <cstdio>

#include "base/BuildInfo.h"
#include "vigilctl/AgentReader.h"
#include "vigilctl/StatusReport.h"
#include "vigilctl/Terminal.h"

using vigilctl::AgentReader;
using vigilctl::StatusReport;

namespace {

constexpr int watchMs = 1000;

struct Options
{
    QUrl url;
    bool isJson = false;
    bool isWatch = false;
};

void print(const QByteArray& text)
{
    std::fwrite(text.constData(), 1, static_cast<size_t>(text.size()), stdout);
    std::fflush(stdout);
}

int complain(const QString& problem)
{
    std::fprintf(stderr, "vigilctl: %s\n", qPrintable(problem));
    return StatusReport::Unknown;
}

/// False if the arguments are wrong; the reason has been printed.
bool readArguments(Options& options)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Shows the health of this host's applications."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption url(
        QStringLiteral("url"), QStringLiteral("Ask the agent whose page is at <url>, see its option --http."),
        QStringLiteral("url"), QStringLiteral("http://127.0.0.1:43180/"));
    const QCommandLineOption json(
        QStringLiteral("json"),
        QStringLiteral("Print the agent's document, see checks.schema.json, in one line."));
    parser.addOptions({url, json});
    parser.addPositionalArgument(
        QStringLiteral("command"),
        QStringLiteral("status: print what is wrong.\nwatch: the same every second."));
    parser.process(*QCoreApplication::instance());
    const QString command = parser.positionalArguments().value(0);
    options = {QUrl(parser.value(url)), parser.isSet(json), command == QLatin1String("watch")};
    if (parser.positionalArguments().size() != 1 || !(options.isWatch || command == QLatin1String("status")))
        complain(QStringLiteral("expected a command: status or watch"));
    else if (!options.url.isValid() || options.url.scheme() != QLatin1String("http"))
        complain(QStringLiteral("--url: expected an address as in http://127.0.0.1:43180/"));
    else
        return true;
    return false;
}

/// Returns the exit code.
int show(const QByteArray& document, const QString& problem, const Options& options)
{
    const StatusReport report(QJsonDocument::fromJson(document).object());
    if (problem.isEmpty() && report.isValid()) {
        print(options.isJson ? QJsonDocument::fromJson(document).toJson(QJsonDocument::Compact) + '\n'
                             : report.text(vigilctl::isTerminal()).toUtf8());
        return report.exitCode();
    }
    const QString reason = problem.isEmpty() ? QStringLiteral("it is not an agent") : problem;
    return complain(QStringLiteral("no answer from the agent at %1: %2").arg(options.url.toString(), reason));
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vigilctl"));
    QCoreApplication::setApplicationVersion(QLatin1String(base::buildInfo::version()));
    Options options;
    if (!readArguments(options))
        return StatusReport::Unknown;

    AgentReader reader(options.url);
    QTimer pause;
    pause.setSingleShot(true);
    QObject::connect(&pause, &QTimer::timeout, &reader, &AgentReader::read);
    QObject::connect(&reader, &AgentReader::finished,
                     [&](const QByteArray& document, const QString& problem) {
                         const char* clearScreen = "\033[H\033[2J";
                         if (options.isWatch && !options.isJson && vigilctl::isTerminal())
                             print(clearScreen);
                         const int code = show(document, problem, options);
                         if (options.isWatch)
                             pause.start(watchMs);
                         else
                             QCoreApplication::exit(code);
                     });
    reader.read();
    return QCoreApplication::exec();
}
