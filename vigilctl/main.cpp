// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <cstdio>
#include <memory>

#include "base/BuildInfo.h"
#include "vigilctl/AgentReader.h"
#include "vigilctl/Arguments.h"
#include "vigilctl/Change.h"
#include "vigilctl/ControlClient.h"
#include "vigilctl/JsonMember.h"
#include "vigilctl/Printable.h"
#include "vigilctl/StatusReport.h"
#include "vigilctl/Terminal.h"

using vigilctl::AgentReader;
using vigilctl::Arguments;
using vigilctl::Change;
using vigilctl::ControlClient;
using vigilctl::DocumentReader;
using vigilctl::StatusReport;

namespace {

constexpr int watchMs = 1000;

/// False if not all of it is written, for example to a full disk.
bool print(const QByteArray& text)
{
    const auto size = static_cast<size_t>(text.size());
    return std::fwrite(text.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
}

int complain(const QString& problem)
{
    std::fprintf(stderr, "vigilctl: %s\n", qPrintable(problem));
    return StatusReport::Unknown;
}

int complainOfOutput()
{
    return complain(QStringLiteral("cannot write to standard output: %1").arg(qt_error_string()));
}

int complainOf(const DocumentReader& reader, const QString& problem)
{
    return complain(QStringLiteral("no answer from the agent at %1: %2").arg(reader.address(), problem));
}

/// The local socket cannot be another user's, so it comes first where this user may open it.
std::unique_ptr<DocumentReader> readerFor(const Arguments& arguments)
{
    const bool isLocal =
        arguments.isControlGiven || (!arguments.isUrlGiven && ControlClient::mayOpen(arguments.controlPath));
    if (isLocal)
        return std::make_unique<ControlClient>(arguments.controlPath);
    return std::make_unique<AgentReader>(arguments.url);
}

/// Why the agent refuses the request; empty if it does not.
QString refusalIn(const QJsonObject& reply)
{
    return vigilctl::printable(vigilctl::member(reply, "error"));
}

/// Returns the exit code.
int show(const QByteArray& answer, const QString& problem, const DocumentReader& reader, bool isJson)
{
    const QJsonObject document = QJsonDocument::fromJson(answer).object();
    const StatusReport report(document);
    if (!refusalIn(document).isEmpty())
        return complain(refusalIn(document));
    if (!problem.isEmpty() || !report.isValid())
        return complainOf(reader, problem.isEmpty() ? QStringLiteral("it is not an agent") : problem);
    const bool isPrinted = print(isJson ? QJsonDocument(document).toJson(QJsonDocument::Compact) + '\n'
                                        : report.text(vigilctl::isTerminal()).toUtf8());
    return isPrinted ? report.exitCode() : complainOfOutput();
}

int report(const Arguments& arguments)
{
    const bool isWatch = arguments.command == Arguments::Command::Watch;
    const std::unique_ptr<DocumentReader> reader = readerFor(arguments);
    QTimer pause;
    pause.setSingleShot(true);
    QObject::connect(&pause, &QTimer::timeout, reader.get(), &DocumentReader::read);
    QObject::connect(reader.get(), &DocumentReader::finished, &pause,
                     [&](const QByteArray& answer, const QString& problem) {
                         const char* clearScreen = "\033[H\033[2J";
                         if (isWatch && !arguments.isJson && vigilctl::isTerminal())
                             print(clearScreen);
                         const int code = show(answer, problem, *reader, arguments.isJson);
                         if (isWatch)
                             pause.start(watchMs);
                         else
                             QCoreApplication::exit(code);
                     });
    reader->read();
    return QCoreApplication::exec();
}

/// Returns the exit code.
int showDone(const Arguments& arguments, const QByteArray& answer)
{
    const QJsonObject reply = QJsonDocument::fromJson(answer).object();
    if (reply.isEmpty())
        return complain(QStringLiteral("the agent's answer has no meaning"));
    if (!refusalIn(reply).isEmpty())
        return complain(refusalIn(reply));
    const bool isPrinted = print(arguments.isJson ? QJsonDocument(reply).toJson(QJsonDocument::Compact) + '\n'
                                                  : Change(arguments).text(reply).toUtf8());
    return isPrinted ? 0 : complainOfOutput();
}

/// Looks up the number in the document, then asks for the change.
int change(const Arguments& arguments)
{
    ControlClient client(arguments.controlPath);
    bool isAsked = false;
    QObject::connect(&client, &DocumentReader::finished, &client,
                     [&](const QByteArray& answer, const QString& problem) {
                         if (!problem.isEmpty())
                             return QCoreApplication::exit(complainOf(client, problem));
                         if (isAsked)
                             return QCoreApplication::exit(showDone(arguments, answer));
                         const QJsonObject document = QJsonDocument::fromJson(answer).object();
                         if (!refusalIn(document).isEmpty())
                             return QCoreApplication::exit(complain(refusalIn(document)));
                         QJsonObject request;
                         const QString mistake = Change(arguments).makeRequest(document, request);
                         if (!mistake.isEmpty())
                             return QCoreApplication::exit(complain(mistake));
                         isAsked = true;
                         client.ask(request);
                     });
    client.read();
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vigilctl"));
    QCoreApplication::setApplicationVersion(QLatin1String(base::buildInfo::version()));
    Arguments arguments;
    const QString problem = vigilctl::readArguments(QCoreApplication::arguments(), arguments);
    if (!problem.isEmpty())
        return complain(problem);
    return arguments.isReport() ? report(arguments) : change(arguments);
}
