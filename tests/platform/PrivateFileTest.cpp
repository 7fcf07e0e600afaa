// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "platform/Platform.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using platform::PrivateFile;

class PrivateFileOnDisk : public testing::Test
{
protected:
    QString path(const char* name) const { return m_directory.filePath(QLatin1String(name)); }

    QString put(const char* name, const QByteArray& content) const
    {
        QFile file(path(name));
        file.open(QIODevice::WriteOnly);
        file.write(content);
        return file.fileName();
    }

    bool makeWithMode(mode_t mode)
    {
        const QString made = path("directory");
        mkdir(QFile::encodeName(made).constData(), S_IRWXU);
        chmod(QFile::encodeName(made).constData(), mode);
        return platform::makePrivateDirectory(made);
    }

    mode_t modeOf(const char* name) const
    {
        struct stat info
        {
        };
        stat(QFile::encodeName(path(name)).constData(), &info);
        return info.st_mode & 07777U;
    }

    bool canLock(const char* name)
    {
        const auto file = PrivateFile::open(path(name));
        return file && file->lock();
    }

    QTemporaryDir m_directory;
};

TEST_F(PrivateFileOnDisk, OpeningChangesNothing)
{
    put("file", "content");
    const auto file = PrivateFile::open(path("file"));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->size(), 7);
    EXPECT_TRUE(file->append("+"));
    EXPECT_EQ(file->size(), 8);
    EXPECT_TRUE(file->clear());
    EXPECT_EQ(file->size(), 0);
}

TEST_F(PrivateFileOnDisk, IsForItsOwnerAlone)
{
    ASSERT_TRUE(PrivateFile::open(path("file")));
    EXPECT_EQ(modeOf("file"), 0600U);
}

TEST_F(PrivateFileOnDisk, TheOwnerHasAccessWhateverTheFileModeMask)
{
    const mode_t before = umask(0777);
    EXPECT_TRUE(platform::makePrivateDirectory(path("a/b")));
    EXPECT_TRUE(PrivateFile::open(path("a/b/file")));
    umask(before);
    EXPECT_EQ(modeOf("a"), 0700U);
    EXPECT_EQ(modeOf("a/b"), 0700U);
    EXPECT_EQ(modeOf("a/b/file"), 0600U);
}

TEST_F(PrivateFileOnDisk, GrowsToTheLimitOfTheProcessWithoutASignal)
{
    const auto file = PrivateFile::open(path("file"));
    ASSERT_TRUE(file);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit few{10, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &few);
    EXPECT_TRUE(file->append("12345678"));
    EXPECT_FALSE(file->append("123"));
    EXPECT_TRUE(file->append("90"));
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(file->size(), 10);
}

TEST_F(PrivateFileOnDisk, ALinkIsNotOpened)
{
    const QString target = put("target", "content");
    QFile::link(target, path("link"));
    EXPECT_FALSE(PrivateFile::open(path("link")));
    ASSERT_EQ(link(QFile::encodeName(target).constData(), QFile::encodeName(path("hard")).constData()), 0);
    EXPECT_FALSE(PrivateFile::open(path("hard")));
}

TEST_F(PrivateFileOnDisk, AFifoAndADirectoryAreNotOpened)
{
    ASSERT_EQ(mkfifo(QFile::encodeName(path("fifo")).constData(), S_IRWXU), 0);
    EXPECT_FALSE(PrivateFile::open(path("fifo")));
    EXPECT_FALSE(PrivateFile::open(m_directory.path()));
}

TEST_F(PrivateFileOnDisk, ALockLastsUntilTheFileIsClosed)
{
    auto file = PrivateFile::open(path("file"));
    ASSERT_TRUE(file->lock());
    EXPECT_FALSE(canLock("file"));
    file.reset();
    EXPECT_TRUE(canLock("file"));
}

TEST_F(PrivateFileOnDisk, TheSecondOpeningKeepsTheLock)
{
    const auto file = PrivateFile::open(path("file"));
    ASSERT_TRUE(file->lock());
    EXPECT_TRUE(file->isInPlace());
    EXPECT_FALSE(canLock("file"));
}

TEST_F(PrivateFileOnDisk, ARemovedOrReplacedFileIsNotInPlace)
{
    const auto file = PrivateFile::open(path("file"));
    ASSERT_TRUE(file->isInPlace());
    QFile::remove(path("file"));
    EXPECT_FALSE(file->isInPlace());
    put("file", "another");
    EXPECT_FALSE(file->isInPlace());
}

TEST_F(PrivateFileOnDisk, AForkedChildDoesNotKeepTheLock)
{
    auto file = PrivateFile::open(path("file"));
    ASSERT_TRUE(file->lock());
    int untilChecked[2];
    int ready[2];
    ASSERT_EQ(pipe(untilChecked), 0);
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        close(untilChecked[1]);
        char byte = file->append("from the child") ? 'x' : 'o';
        static_cast<void>(write(ready[1], &byte, 1) + read(untilChecked[0], &byte, 1));
        _exit(0);
    }
    char byte = 0;
    EXPECT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_EQ(byte, 'o') << "the child wrote in its parent's file";
    EXPECT_FALSE(canLock("file")) << "the child took the lock from its parent";
    file.reset();
    EXPECT_TRUE(canLock("file"));
    close(untilChecked[1]);
    waitpid(child, nullptr, 0);
    for (const int descriptor : {untilChecked[0], ready[0], ready[1]})
        close(descriptor);
}

TEST_F(PrivateFileOnDisk, AnExecutedProgramDoesNotKeepTheLock)
{
    auto file = PrivateFile::open(path("file"));
    ASSERT_TRUE(file->lock());
    QProcess program;
    program.start(QStringLiteral("cat"), QStringList());
    ASSERT_TRUE(program.waitForStarted());
    file.reset();
    EXPECT_TRUE(canLock("file"));
    program.closeWriteChannel();
    program.waitForFinished();
}

TEST_F(PrivateFileOnDisk, ADirectoryIsMadeWithItsParentsForTheUserAlone)
{
    EXPECT_TRUE(platform::makePrivateDirectory(path("a/b")));
    EXPECT_EQ(modeOf("a/b"), 0700U);
}

TEST_F(PrivateFileOnDisk, ADirectoryThatOthersMayWriteInDoesNotCount)
{
    EXPECT_TRUE(makeWithMode(0755));
    EXPECT_FALSE(makeWithMode(0775));
    EXPECT_FALSE(makeWithMode(0757));
    EXPECT_TRUE(makeWithMode(01777));
}

TEST_F(PrivateFileOnDisk, AParentThatOthersMayWriteInDoesNotCount)
{
    makeWithMode(0777);
    EXPECT_FALSE(platform::makePrivateDirectory(path("directory/child")));
    makeWithMode(01777);
    EXPECT_TRUE(platform::makePrivateDirectory(path("directory/child")));
}

TEST_F(PrivateFileOnDisk, AnOwnLinkInAPathIsFollowed)
{
    makeWithMode(0755);
    QFile::link(path("directory"), path("link"));
    EXPECT_TRUE(platform::makePrivateDirectory(path("link/child")));
    EXPECT_TRUE(QFileInfo(path("directory/child")).isDir());
    makeWithMode(0777);
    EXPECT_FALSE(platform::makePrivateDirectory(path("link/child"))) << "the link hides an open directory";
}

TEST_F(PrivateFileOnDisk, AFileOrACircleOfLinksIsNoDirectory)
{
    put("file", "");
    EXPECT_FALSE(platform::makePrivateDirectory(path("file/child")));
    QFile::link(path("circle"), path("circle"));
    EXPECT_FALSE(platform::makePrivateDirectory(path("circle/child")));
}

TEST(Platform, KnowsTheRunningProgram)
{
    EXPECT_EQ(platform::processId(), static_cast<std::uint32_t>(getpid()));
    EXPECT_TRUE(platform::programPath().endsWith(QLatin1String("/platform_test")));
    EXPECT_FALSE(platform::isSetUserId());
}
