// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The log on a full disk. A limit on the size of this process's files stands for it.

#include "base/KwLogFile.h"

#include <gmock/gmock.h>

#include <csignal>
#include <sys/resource.h>

#include "LogDirectory.h"
#include "support/QtMessages.h"

using testing::HasSubstr;
using testing::Not;

namespace {

class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_previous);
        const rlimit limit{bytes, m_previous.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &m_previous); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_previous{};
};

} // namespace

TEST(FullDisk, IsReportedOnceAndTheLogGoesOnWhenThereIsSpace)
{
    const support::QtMessages messages;
    const LogDirectory directory;
    base::KwLogFile log;
    log.setLogDirectory(directory.path());
    log.init(QStringLiteral("test"), 10, 1000000, false);
    const auto write = [&log](const QString& text) {
        log.appendLine(text);
        log.writePending();
    };
    const QByteArray before = directory.content("test_0.log");
    {
        const FileSizeLimit limit(static_cast<rlim_t>(before.size()) + 20);
        for (int i = 0; i < 3; ++i)
            write("lost");
        EXPECT_EQ(directory.content("test_0.log"), before) << "half a line was left";
        ASSERT_EQ(messages.all().size(), 1);
        EXPECT_THAT(messages.all().first().toStdString(), HasSubstr("cannot write the log in "));
    }
    write("after");
    const std::string content = directory.content("test_0.log").toStdString();
    EXPECT_THAT(content, HasSubstr(": ___ERROR___ 3 lines could not be written: "));
    EXPECT_THAT(content, HasSubstr(": after\n"));
    EXPECT_THAT(content, Not(HasSubstr(": lost")));
    EXPECT_EQ(messages.all().size(), 1);
}

TEST(FullDisk, AtTheStartTheFirstLinesFollowLater)
{
    const support::QtMessages messages;
    const LogDirectory directory;
    base::KwLogFile log;
    log.setLogDirectory(directory.path());
    {
        const FileSizeLimit limit(0);
        EXPECT_TRUE(log.init(QStringLiteral("test"), 10, 1000000, false));
        EXPECT_EQ(messages.all().size(), 1);
    }
    log.appendLine("after");
    log.writePending();
    const auto lines = directory.lines("test_0.log");
    ASSERT_THAT(lines, testing::SizeIs(testing::Ge(3U)));
    EXPECT_THAT(lines.front(), HasSubstr(": Application started. Package"));
    EXPECT_THAT(lines.back(), HasSubstr(": after"));
}
