// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

#include "agent/netsnmp/SnmpEngine.h"
#include "agent/process/CommandLine.h"

namespace {

QString read(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return QString::fromUtf8(file.readAll());
}

/// Removes every call of function from the source, arguments included.
QString without(const QString& function, QString source)
{
    int start = 0;
    while ((start = source.indexOf(function + QLatin1Char('('))) >= 0) {
        int end = start + function.size() + 1;
        for (int depth = 1; depth > 0 && end < source.size(); ++end) {
            if (source[end] == QLatin1Char('('))
                ++depth;
            else if (source[end] == QLatin1Char(')'))
                --depth;
        }
        source.remove(start, end - start);
    }
    return source;
}

/// The texts of three words or more in a source file, with "…" for what varies.
QStringList messagesIn(const QString& source)
{
    static const QRegularExpression literal(
        QStringLiteral("QStringLiteral\\(\\s*((?:\"(?:[^\"\\\\]|\\\\.)*\"\\s*)+)\\)"));
    static const QRegularExpression seam(QStringLiteral("\"\\s*\""));
    static const QRegularExpression variable(QStringLiteral("%[0-9]"));
    QStringList messages;
    auto match = literal.globalMatch(source);
    while (match.hasNext()) {
        QString text = match.next().captured(1).trimmed();
        text = text.mid(1, text.size() - 2).remove(seam);
        text.replace(QStringLiteral("\\\""), QStringLiteral("\"")).replace(variable, QStringLiteral("…"));
        if (text.count(QLatin1Char(' ')) >= 2)
            messages.append(text);
    }
    return messages;
}

} // namespace

TEST(OperationsDocument, ExplainsEveryMessageOfTheAgent)
{
    const QString document = read(QStringLiteral(VIGIL_SOURCE_DIR "/docs/operations.md"));
    QDirIterator sources(QStringLiteral(VIGIL_SOURCE_DIR "/agent"), {QStringLiteral("*.cpp")}, QDir::Files,
                         QDirIterator::Subdirectories);
    int found = 0;
    while (sources.hasNext()) {
        const QString path = sources.next();
        if (path.contains(QStringLiteral("/agent/show/")))
            continue; // what --show prints are no messages
        QString source = without(QStringLiteral("log::detail"), read(path));
        source = without(QStringLiteral("QCommandLineOption"), source);
        source = without(QStringLiteral("numberOption"), source);
        source = without(QStringLiteral("setApplicationDescription"), source);
        for (const QString& message : messagesIn(source)) {
            // Other code puts the application's name in front of some messages.
            EXPECT_TRUE(document.contains(QStringLiteral("`%1`").arg(message)) ||
                        document.contains(QStringLiteral("`… %1`").arg(message)))
                << qPrintable(path) << ": " << qPrintable(message);
            ++found;
        }
    }
    EXPECT_GT(found, 40) << "the search finds the messages";
}

namespace {

QString help()
{
    agent::Options options;
    options.agentxAddress = agent::SnmpEngine::defaultAgentxAddress();
    QString output;
    const agent::Error error =
        agent::readCommandLine({QStringLiteral("vigil-agent"), QStringLiteral("--help")}, options, output);
    EXPECT_FALSE(error) << qPrintable(error.text());
    return output;
}

/// The default at the end of an option's description, or an empty text.
QString defaultIn(const QString& description)
{
    static const QRegularExpression sentence(QStringLiteral("Default: ([^ ]+)\\.( |$)"));
    return sentence.match(description.simplified()).captured(1);
}

/// The paragraph about an option in the manual page, or an empty text.
QString manualOf(const QString& option)
{
    static const QString manual = read(QStringLiteral(VIGIL_SOURCE_DIR "/docs/vigil-agent.8.md"));
    const QRegularExpression paragraph(QStringLiteral("^\\*\\*.*%1\\*\\*.*\\n: (?:.+\\n)+").arg(option),
                                       QRegularExpression::MultilineOption);
    return paragraph.match(manual).captured();
}

} // namespace

TEST(ManualPage, ExplainsEveryOptionWithItsDefault)
{
    static const QRegularExpression entry(QStringLiteral("^  (?:-[a-z], )?(--[a-z-]+)(.*(?:\\n {4,}.*)*)"),
                                          QRegularExpression::MultilineOption);
    auto match = entry.globalMatch(help());
    int options = 0;
    int defaults = 0;
    while (match.hasNext()) {
        const QRegularExpressionMatch each = match.next();
        const QString option = each.captured(1);
        const QString value = defaultIn(each.captured(2));
        const QString manual = manualOf(option);
        EXPECT_FALSE(manual.isEmpty()) << qPrintable(option);
        EXPECT_EQ(defaultIn(manual), value) << qPrintable(option + QLatin1Char('\n') + manual);
        ++options;
        defaults += value.isEmpty() ? 0 : 1;
    }
    EXPECT_GE(options, 15) << "the search finds the options";
    EXPECT_GE(defaults, 11) << "the search finds the defaults";
}
