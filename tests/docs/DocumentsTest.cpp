// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

#include "agent/process/Options.h"

namespace {

QString read(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return QString::fromUtf8(file.readAll());
}

/// Takes every call of function out of the source, and what its parentheses hold.
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
        QString source = without(QStringLiteral("log::detail"), read(path));
        source = without(QStringLiteral("QCommandLineOption"), source);
        source.remove(QRegularExpression(QStringLiteral("const QCommandLineOption .*?\\};"),
                                         QRegularExpression::DotMatchesEverythingOption));
        source = without(QStringLiteral("setApplicationDescription"), source);
        for (const QString& message : messagesIn(source)) {
            // Some begin with the name of an application, which is put in front of them elsewhere.
            EXPECT_TRUE(document.contains(QStringLiteral("`%1`").arg(message)) ||
                        document.contains(QStringLiteral("`… %1`").arg(message)))
                << qPrintable(path) << ": " << qPrintable(message);
            ++found;
        }
    }
    EXPECT_GT(found, 40) << "the search finds the messages";
}

TEST(ManualPage, ExplainsEveryOption)
{
    agent::Options options;
    QString help;
    ASSERT_EQ(agent::Options::parse({QStringLiteral("vigil-agent"), QStringLiteral("--help")}, options, help),
              agent::Options::Action::PrintText);
    const QString manual = read(QStringLiteral(VIGIL_SOURCE_DIR "/docs/vigil-agent.8.md"));
    auto match =
        QRegularExpression(QStringLiteral("^  (?:-[a-z], )?(--[a-z-]+)"), QRegularExpression::MultilineOption)
            .globalMatch(help);
    int found = 0;
    while (match.hasNext()) {
        const QString option = match.next().captured(1);
        EXPECT_TRUE(manual.contains(QStringLiteral("**%1**").arg(option))) << qPrintable(option);
        ++found;
    }
    EXPECT_GE(found, 15) << qPrintable(help);
}
