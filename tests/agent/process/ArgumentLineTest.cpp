// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <windows.h>

#include <shellapi.h>

#include "agent/process/ArgumentLine.h"
#include "support/QtPrinters.h"

namespace {

QStringList readBack(const QString& line)
{
    int count = 0;
    LPWSTR* arguments = CommandLineToArgvW(reinterpret_cast<const wchar_t*>(line.utf16()), &count);
    QStringList list;
    for (int index = 0; index < count; ++index)
        list += QString::fromWCharArray(arguments[index]);
    LocalFree(arguments);
    return list;
}

} // namespace

TEST(ArgumentLine, WindowsReadsTheSameArguments)
{
    const QStringList arguments{QStringLiteral("C:\\Program Files\\Vigil\\vigil-agent.exe"),
                                QStringLiteral("--service"),
                                QString(),
                                QStringLiteral("two words"),
                                QStringLiteral("a \"quoted\" word"),
                                QStringLiteral("\\\\server\\share\\"),
                                QStringLiteral("a folder\\"),
                                QStringLiteral("\\\"both\\\\\""),
                                QStringLiteral("\ttab"),
                                QString::fromUtf8("K\xc3\xb6nig \xd0\x96")};
    EXPECT_EQ(readBack(agent::argumentLine(arguments)), arguments);
}

TEST(ArgumentLine, QuotesTheProgramAndWhatNeedsIt)
{
    EXPECT_EQ(agent::argumentLine(
                  {QStringLiteral("C:\\a.exe"), QStringLiteral("--verbose"), QStringLiteral("a b")}),
              QStringLiteral("\"C:\\a.exe\" --verbose \"a b\""));
}
