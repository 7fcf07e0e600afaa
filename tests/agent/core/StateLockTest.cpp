// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

#include "agent/core/Log.h"
#include "agent/core/StateLock.h"
#include "support/QtPrinters.h"

using agent::StateLock;

namespace {

class StateLockTest : public testing::Test
{
protected:
    StateLockTest()
    {
        agent::log::setSink([this](agent::log::Severity, const QString& line) {
            lines.append(line);
            return true;
        });
    }

    ~StateLockTest() override { agent::log::setSink(nullptr); }

    const QTemporaryDir directory;
    QStringList lines;
};

} // namespace

TEST_F(StateLockTest, KeepsADirectoryForOneAgent)
{
    auto first = std::make_unique<StateLock>();
    ASSERT_FALSE(first->take(directory.path()));
    EXPECT_EQ(
        StateLock().take(directory.path()).text(),
        QStringLiteral("another agent uses the state directory %1. Stop it, or choose another directory "
                       "with --state-directory")
            .arg(directory.path()));
    EXPECT_FALSE(StateLock().take(QTemporaryDir().path())) << "another directory";
    first.reset();
    EXPECT_FALSE(StateLock().take(directory.path()));
    EXPECT_FALSE(StateLock().take(directory.path())) << "also after a refusal";
}

TEST_F(StateLockTest, AFileThatIsLeftLocksNothing)
{
    QFile file(directory.filePath(QStringLiteral("lock")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("4711\n");
    EXPECT_FALSE(StateLock().take(directory.path()));
    EXPECT_EQ(lines, QStringList());
}

TEST_F(StateLockTest, WarnsAndGoesOnIfNoLockCanBeMade)
{
    ASSERT_TRUE(QDir(directory.path()).mkdir(QStringLiteral("lock")));
    EXPECT_FALSE(StateLock().take(directory.path()));
    EXPECT_FALSE(StateLock().take(directory.filePath(QStringLiteral("missing"))));
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(
        lines[0].startsWith(QStringLiteral("cannot lock the state directory %1: ").arg(directory.path())))
        << qPrintable(lines[0]);
    EXPECT_TRUE(lines[0].endsWith(QStringLiteral(". Make sure that no other agent uses it")))
        << qPrintable(lines[0]);
}
