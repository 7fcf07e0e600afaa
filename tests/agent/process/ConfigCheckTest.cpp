// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include "agent/process/ConfigCheck.h"
#include "support/ManualClock.h"
#include "support/QtPrinters.h"
#include "support/RunUntil.h"

namespace {

/// Beside this program, because the temporary folder may permit no programs. Another user may have built it.
QString folderForPrograms()
{
    const QString beside = QCoreApplication::applicationDirPath();
    return QFileInfo(beside).isWritable() ? beside : QDir::tempPath();
}

/// Checks by a shell script in place of the agent.
class ConfigCheckTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(directory.isValid()) << qPrintable(directory.errorString()); }

    QString programThat(const QByteArray& script)
    {
        QFile file(directory.filePath(QStringLiteral("program")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return file.fileName();
    }

    void start(agent::ConfigCheck& check)
    {
        QObject::connect(&check, &agent::ConfigCheck::finished, &check,
                         [this](const QString& problem) { problems.append(problem); });
        check.start(directory.filePath(QStringLiteral("file.conf")));
    }

    QTemporaryDir directory{folderForPrograms() + QStringLiteral("/config-check-XXXXXX")};
    support::ManualClock clock;
    QStringList problems;
};

} // namespace

TEST_F(ConfigCheckTest, TellsTheLastErrorOfTheProgram)
{
    agent::ConfigCheck check(
        clock, programThat("echo 'vigil-agent: error: line 3 is wrong' >&2\ntest \"$1\" = --wrong\n"));
    start(check);
    ASSERT_TRUE(support::runUntil([this] { return !problems.isEmpty(); }));
    EXPECT_EQ(problems, QStringList(QStringLiteral("line 3 is wrong")));
    EXPECT_EQ(clock.liveCalls(), 0U) << "the deadline is off";
}

/// As the system's loader does before the program starts.
TEST_F(ConfigCheckTest, TellsAllThatAProgramWithoutAnErrorOfItsOwnSays)
{
    agent::ConfigCheck check(clock, programThat("echo 'program: a library is missing' >&2\nexit 127\n"));
    start(check);
    ASSERT_TRUE(support::runUntil([this] { return !problems.isEmpty(); }));
    EXPECT_EQ(problems, QStringList(QStringLiteral("program: a library is missing")));
}

TEST_F(ConfigCheckTest, ASilentFailureIsAProblem)
{
    agent::ConfigCheck check(clock, programThat("exit 7\n"));
    start(check);
    ASSERT_TRUE(support::runUntil([this] { return !problems.isEmpty(); }));
    EXPECT_EQ(problems, QStringList(QStringLiteral("the check of the configuration ended with the code 7")));
}

TEST_F(ConfigCheckTest, ACorrectFileIsNoProblem)
{
    agent::ConfigCheck check(clock, programThat("exit 0\n"));
    start(check);
    ASSERT_TRUE(support::runUntil([this] { return !problems.isEmpty(); }));
    EXPECT_EQ(problems, QStringList(QString()));
}

TEST_F(ConfigCheckTest, AProgramThatHangsIsEndedAfterHalfAMinute)
{
    agent::ConfigCheck check(clock, programThat("exec sleep 1000\n"));
    start(check);
    clock.advance(29'999);
    EXPECT_FALSE(support::runUntil([this] { return !problems.isEmpty(); }, 50));
    clock.advance(1);
    ASSERT_TRUE(support::runUntil([this] { return !problems.isEmpty(); }));
    EXPECT_EQ(problems,
              QStringList(QStringLiteral("the check of the configuration has crashed or took too long")));
}
