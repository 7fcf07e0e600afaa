// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/process/SavedState.h"

using agent::SavedApplication;
using agent::SavedState;

namespace {

SavedState example()
{
    SavedApplication shop;
    shop.info.since = QDateTime(QDate(2026, 1, 31), QTime(12, 34, 56), Qt::UTC);
    shop.info.address = QHostAddress(QHostAddress::LocalHost);
    shop.info.port = 40112;
    shop.info.identity = {"1001", 4711, QStringLiteral("shop server")};
    shop.checks = {{{1, 97, 1, 98}, 0, "all is\nwell, 100 % ü"}, {{0, 0}, 2, ""}};
    SavedApplication stranger;
    stranger.info = shop.info;
    shop.info.state = agent::ApplicationInfo::State::Lost;
    stranger.info.identity = {};
    SavedState state;
    state.applications = {shop, stranger};
    state.notified = {{{1, 97, 1, 98}, 3}};
    state.mutes = {{{1, 97, 1, 99}, {QDateTime(QDate(2026, 1, 31), QTime(14, 0), Qt::UTC), 7'199'001}}};
    state.forgotten = {{{1, 97, 1, 100}, 3, "no connection"}};
    return state;
}

const QString soundLine = QStringLiteral("notified 2 1.97.1.98");

} // namespace

TEST(SavedState, ReadsWhatItWrote)
{
    const QStringList lines = example().toLines();
    EXPECT_EQ(lines.value(0),
              QStringLiteral("lost 2026-01-31T12:34:56Z 1001 4711 127.0.0.1 40112 shop%20server"));
    SavedState read;
    ASSERT_EQ(read.readLines(lines).lines, 0) << qPrintable(lines.join(QLatin1Char('\n')));
    EXPECT_EQ(read.toLines(), lines);
    ASSERT_EQ(read.applications.size(), 2u);
    EXPECT_EQ(read.applications[0].info.identity.user, "1001");
    EXPECT_EQ(read.applications[0].info.state, agent::ApplicationInfo::State::Lost);
    ASSERT_EQ(read.applications[0].checks.size(), 2u);
    EXPECT_EQ(read.applications[0].checks[0].summary, "all is\nwell, 100 % ü");
    EXPECT_EQ(read.applications[1].info.identity.user, std::nullopt);
    EXPECT_EQ(read.applications[1].info.state, agent::ApplicationInfo::State::Connected);
    EXPECT_EQ(read.notified, example().notified);
    ASSERT_EQ(read.mutes.size(), 1u);
    EXPECT_EQ(read.mutes.begin()->second.until, example().mutes.begin()->second.until);
    EXPECT_EQ(read.mutes.begin()->second.forMs, 7'200'000) << "whole seconds";
    EXPECT_TRUE(lines.contains(QStringLiteral("muted 2026-01-31T14:00:00Z 7200 1.97.1.99")));
    ASSERT_EQ(read.forgotten.size(), 1u);
    EXPECT_EQ(read.forgotten[0].summary, "no connection");
    EXPECT_EQ(lines.last(), QStringLiteral("forgotten 3 1.97.1.100 no%20connection"));
}

// One damaged line made the agent drop all others.
TEST(SavedState, LeavesOutLinesWithoutMeaning)
{
    for (const char* line :
         {"", "lost", "unknown 1 2", "notified 4 1.97", "notified x", "notified x 1.97", "notified 2 a.b",
          "check 0 1.97.1.98 before%20any%20application", "lost never 1001 4711 127.0.0.1 40112 x",
          "lost 2026-01-31T12:34:56Z u 1 ::1 1 x", "muted", "muted never 9 1.97",
          "muted 2026-01-31T14:00:00Z 9 a.b", "muted 2026-01-31T14:00:00Z 0 1.97",
          "muted 2026-01-31T14:00:00Z -1 1.97", "muted 2026-01-31T14:00:00Z 1.97", "forgotten",
          "forgotten 3 1.97", "forgotten 4 1.97 x"}) {
        SavedState state;
        const SavedState::Wrong wrong =
            state.readLines({soundLine, QLatin1String(line), soundLine, QLatin1String(line)});
        EXPECT_EQ(wrong.lines, 2) << line;
        EXPECT_EQ(wrong.first, 3) << line;
        EXPECT_EQ(state.toLines(), QStringList{soundLine}) << line;
    }
}

TEST(SavedState, NoApplicationGetsTheChecksOfAnotherWhoseLineIsDamaged)
{
    QStringList lines = example().toLines();
    lines.append(QStringLiteral("lost 2026-01-31T12:34:56Z 1001 4711"));
    lines.append(QStringLiteral("check 2 1.97.1.99 of%20the%20damaged%20one"));
    SavedState state;
    EXPECT_EQ(state.readLines(lines).lines, 2);
    EXPECT_EQ(state.toLines(), example().toLines());
}
