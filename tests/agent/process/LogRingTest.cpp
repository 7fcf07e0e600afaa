// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "agent/process/LogRing.h"
#include "support/QtPrinters.h"

using agent::LogRing;

namespace {

class LogRingTest : public testing::Test
{
protected:
    QByteArray contents(int index) const
    {
        QFile file(path(index));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QString path(int index) const
    {
        return directory.filePath(QStringLiteral("vigil-agent_%1.log").arg(index));
    }

    void setAge(int index, int seconds) const
    {
        QFile file(path(index));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(QDateTime::currentDateTime().addSecs(-seconds),
                                     QFileDevice::FileModificationTime));
    }

    QTemporaryDir directory;
};

} // namespace

TEST_F(LogRingTest, AFullFileIsFollowedByTheNextOne)
{
    LogRing ring(directory.path(), 10);
    for (const char* line : {"one\n", "two\n", "three\n"})
        EXPECT_TRUE(ring.write(line));
    EXPECT_EQ(contents(0), QByteArray("one\ntwo\n"));
    EXPECT_EQ(contents(1), QByteArray("three\n"));
}

TEST_F(LogRingTest, TheLastFileIsFollowedByTheFirst)
{
    LogRing ring(directory.path(), 2);
    for (int number = 0; number <= LogRing::files; ++number)
        EXPECT_TRUE(ring.write(QByteArray::number(number) + '\n'));
    EXPECT_EQ(contents(0), QByteArray("5\n"));
    EXPECT_EQ(contents(1), QByteArray("1\n"));
    EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files).size(), LogRing::files);
}

TEST_F(LogRingTest, ANewRunGoesOnInTheFileWrittenLast)
{
    {
        LogRing ring(directory.path(), 10);
        for (const char* line : {"first\n", "second\n", "3\n"})
            EXPECT_TRUE(ring.write(line));
    }
    setAge(0, 60);
    LogRing ring(directory.path(), 10);
    EXPECT_TRUE(ring.write("4\n"));
    EXPECT_EQ(contents(1), QByteArray("second\n3\n"));
    EXPECT_EQ(contents(2), QByteArray("4\n"));
}

TEST_F(LogRingTest, ALineLongerThanAFileHasAFileOfItsOwn)
{
    LogRing ring(directory.path(), 4);
    EXPECT_TRUE(ring.write("a long line\n"));
    EXPECT_TRUE(ring.write("b\n"));
    EXPECT_EQ(contents(0), QByteArray("a long line\n"));
    EXPECT_EQ(contents(1), QByteArray("b\n"));
}

TEST_F(LogRingTest, WithoutItsFolderLinesAreLost)
{
    LogRing ring(directory.filePath(QStringLiteral("missing")));
    EXPECT_FALSE(ring.write("a line\n"));
    ASSERT_TRUE(QDir(directory.path()).mkdir(QStringLiteral("missing")));
    EXPECT_TRUE(ring.write("a line\n"));
}
