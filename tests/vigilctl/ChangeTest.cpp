// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QJsonDocument>

#include "support/QtPrinters.h"
#include "vigilctl/Change.h"

using vigilctl::Arguments;
using vigilctl::Change;

namespace {

const QJsonObject document = QJsonDocument::fromJson(R"({
    "checks": [{"number": 1, "name": "shop/web"}, {"number": 2, "name": "a/b/c"}, {"number": 3, "name": "a/b/c"},
               {"number": 4, "name": "2"}],
    "applications": [{"number": 1, "program": "web", "state": "connected"},
                     {"number": 2, "program": "web", "state": "lost"},
                     {"number": 3, "program": "db", "state": "silent"}]})")
                                 .object();

Arguments argumentsFor(Arguments::Command command, const char* target)
{
    Arguments arguments;
    arguments.command = command;
    arguments.target = QLatin1String(target);
    arguments.seconds = 60;
    return arguments;
}

/// The request as JSON, or the problem.
QString requestFor(Arguments::Command command, const char* target)
{
    QJsonObject request;
    const QString problem = Change(argumentsFor(command, target)).makeRequest(document, request);
    return problem.isEmpty() ? QString::fromUtf8(QJsonDocument(request).toJson(QJsonDocument::Compact))
                             : problem;
}

} // namespace

TEST(Change, NamesACheckByNameOrNumber)
{
    const QString mute = QStringLiteral(R"({"check":1,"command":"mute","name":"shop/web","seconds":60})");
    EXPECT_EQ(requestFor(Arguments::Command::Mute, "shop/web"), mute);
    EXPECT_EQ(requestFor(Arguments::Command::Mute, "1"), mute);
    EXPECT_EQ(requestFor(Arguments::Command::Unmute, "1"),
              QStringLiteral(R"({"check":1,"command":"unmute","name":"shop/web"})"));
}

// An application chooses the names of its checks.
TEST(Change, ANumberIsNeverAName)
{
    EXPECT_TRUE(requestFor(Arguments::Command::Mute, "2").startsWith(QLatin1String(R"({"check":2,)")));
}

TEST(Change, ANameOfSeveralNeedsANumber)
{
    EXPECT_EQ(requestFor(Arguments::Command::Mute, "a/b/c"),
              QStringLiteral("a/b/c is the name of several; choose a number: 2, 3"));
    EXPECT_EQ(requestFor(Arguments::Command::Mute, "shop/db"), QStringLiteral("there is no check shop/db"));
}

TEST(Change, OnlyALostApplicationIsForgotten)
{
    const QString forget = QStringLiteral(R"({"application":2,"command":"forget"})");
    EXPECT_EQ(requestFor(Arguments::Command::Forget, "2"), forget);
    EXPECT_EQ(requestFor(Arguments::Command::Forget, "web"), forget) << "the other one is connected";
    EXPECT_EQ(requestFor(Arguments::Command::Forget, "db"),
              QStringLiteral("application db is connected; only a lost one can be forgotten"));
    EXPECT_EQ(requestFor(Arguments::Command::Forget, "mail"), QStringLiteral("there is no application mail"));
}

TEST(Change, AHostileNameCannotControlTheTerminal)
{
    const QJsonObject reply{{QStringLiteral("name"), QStringLiteral("a\033[2Jb")}};
    EXPECT_EQ(Change(argumentsFor(Arguments::Command::Unmute, "1")).text(reply),
              QStringLiteral("a[2Jb is no longer muted\n"));
}

TEST(Change, APlaceholderInANameStays)
{
    const QJsonObject reply{{QStringLiteral("name"), QStringLiteral("%2 and %1")},
                            {QStringLiteral("cells"), 4}};
    EXPECT_EQ(Change(argumentsFor(Arguments::Command::Forget, "1")).text(reply),
              QStringLiteral("%2 and %1 is forgotten, cells removed: 4\n"));
}
