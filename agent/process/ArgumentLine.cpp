// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/ArgumentLine.h"

namespace agent {

namespace {

bool needsQuotes(const QString& argument)
{
    return argument.isEmpty() || argument.contains(QLatin1Char(' ')) ||
           argument.contains(QLatin1Char('\t')) || argument.contains(QLatin1Char('"'));
}

/// Backslashes mean themselves, but not before a quote.
QString quoted(const QString& argument)
{
    QString text(QLatin1Char('"'));
    int backslashes = 0;
    for (const QChar letter : argument) {
        if (letter == QLatin1Char('"'))
            text += QString(backslashes + 1, QLatin1Char('\\'));
        backslashes = letter == QLatin1Char('\\') ? backslashes + 1 : 0;
        text += letter;
    }
    return text + QString(backslashes, QLatin1Char('\\')) + QLatin1Char('"');
}

} // namespace

QString argumentLine(const QStringList& arguments)
{
    QStringList texts;
    for (const QString& argument : arguments) {
        // Without quotes, a program in a folder with a blank may be looked for in other folders first.
        const bool isProgram = texts.isEmpty();
        texts += isProgram || needsQuotes(argument) ? quoted(argument) : argument;
    }
    return texts.join(QLatin1Char(' '));
}

} // namespace agent
