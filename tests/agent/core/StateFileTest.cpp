// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>

#include "agent/core/StateFile.h"

using agent::StateFile;

namespace {

/// Lets this process write no file beyond some bytes, as a full disk would.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit = {bytes, m_before.rlim_max};
        m_wasSuccessful = setrlimit(RLIMIT_FSIZE, &limit) == 0;
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

    bool wasSuccessful() const { return m_wasSuccessful; }

private:
    void (*m_handler)(int) = std::signal(SIGXFSZ, SIG_IGN);
    rlimit m_before = {};
    bool m_wasSuccessful = false;
};

class StateFileTest : public testing::Test
{
protected:
    void fill(const QByteArray& text) const
    {
        QFile raw(path);
        ASSERT_TRUE(raw.open(QIODevice::WriteOnly));
        raw.write(text);
    }

    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("file"));
    const StateFile file{path, QStringLiteral("test")};
    QStringList lines{QStringLiteral("left over")};
};

} // namespace

TEST_F(StateFileTest, ReadsWhatItWrote)
{
    const QStringList written{QStringLiteral("one"), QStringLiteral("zwei ü")};
    ASSERT_FALSE(file.write(written));
    ASSERT_FALSE(file.write({QStringLiteral("gone")}));
    ASSERT_FALSE(file.write(written));
    EXPECT_FALSE(file.read(lines));
    EXPECT_EQ(lines, written);
    EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files).size(), 1) << "no temporary file is left";
}

TEST_F(StateFileTest, NoFileMeansNoLines)
{
    EXPECT_FALSE(file.read(lines));
    EXPECT_TRUE(lines.isEmpty());
    EXPECT_FALSE(StateFile(QString(), QString()).write({}));
    EXPECT_FALSE(StateFile(QString(), QString()).read(lines));
}

TEST_F(StateFileTest, NoticesDamagedAndForeignFiles)
{
    for (const char* text : {"", "\n", "something else\n", "vigil-agent-test-2\none\nend\n",
                             "vigil-agent-test-1\none\n", "vigil-agent-test-1\none\nend", "\xff\xfe"}) {
        fill(text);
        EXPECT_TRUE(file.read(lines)) << text;
        EXPECT_TRUE(lines.isEmpty()) << text;
    }
}

// Opening a pipe without a writer blocks.
TEST_F(StateFileTest, ReadsOnlyFiles)
{
    ASSERT_EQ(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    EXPECT_EQ(file.read(lines).text(),
              QStringLiteral("cannot read the state file %1: it is not a file").arg(path));
    EXPECT_TRUE(lines.isEmpty());
}

TEST_F(StateFileTest, SaysThatItCannotBeWritten)
{
    const StateFile elsewhere(directory.filePath(QStringLiteral("none/file")), QStringLiteral("test"));
    EXPECT_TRUE(elsewhere.write({}).text().startsWith(QStringLiteral("cannot write the state file ")));
}

// A full disk replaced the file by an empty one, and nothing was said.
TEST_F(StateFileTest, AFullDiskLeavesTheOldFile)
{
    const QStringList written{QStringLiteral("one")};
    ASSERT_FALSE(file.write(written));
    for (const rlim_t bytes : {rlim_t{0}, rlim_t{25}}) {
        const FileSizeLimit limit(bytes);
        ASSERT_TRUE(limit.wasSuccessful());
        EXPECT_TRUE(file.write({QStringLiteral("two")})) << bytes;
    }
    EXPECT_FALSE(file.read(lines));
    EXPECT_EQ(lines, written);
    EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files).size(), 1) << "no temporary file is left";
    EXPECT_FALSE(file.write({QStringLiteral("two")})) << "there is room again";
}
