// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The log beside other programs. A second log in this process stands for another program: its files are
// locked in the same way.

#include "base/KwLogFile.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "LogDirectory.h"
#include "base/Printable.h"
#include "base/RepeatedLines.h"
#include "platform/Platform.h"
#include "support/EnvironmentVariable.h"
#include "support/QtMessages.h"
#include "support/RunUntil.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

class LogRing : public testing::Test
{
protected:
    base::KwLogFile& start(int maxFiles = 10)
    {
        logs.push_back(std::make_unique<base::KwLogFile>());
        logs.back()->setLogDirectory(path);
        logs.back()->init(QStringLiteral("test"), maxFiles, 1000000, false);
        return *logs.back();
    }

    /// A short tool: it writes one line and ends.
    void runTool(const QString& text, int maxFiles = 10)
    {
        write(start(maxFiles), text);
        logs.pop_back();
    }

    static void write(base::KwLogFile& log, const QString& text)
    {
        log.appendLine(text);
        log.writePending();
    }

    std::string content(const char* name) const
    {
        return directory.content(QLatin1String(name)).toStdString();
    }

    LogDirectory directory;
    QString path = directory.path();
    std::vector<std::unique_ptr<base::KwLogFile>> logs;
};

// Files in use

TEST_F(LogRing, TheFileOfARunningProgramIsNeverTakenByShortOnes)
{
    base::KwLogFile& daemon = start();
    write(daemon, "before");
    for (int i = 0; i < 25; ++i) {
        runTool("tool");
        write(daemon, "meanwhile");
    }
    EXPECT_THAT(content("test_0.log"), HasSubstr("before"));
    EXPECT_EQ(directory.content("test_0.log").count("meanwhile"), 25);
    EXPECT_FALSE(directory.content("test_0.log").contains('\0'));
}

TEST_F(LogRing, ShortProgramsUseTheWholeRingBesideARunningOne)
{
    base::KwLogFile& daemon = start();
    for (int i = 1; i <= 9; ++i) {
        runTool(QStringLiteral("tool %1").arg(i));
        const QString name = QStringLiteral("test_%1.log").arg(i);
        EXPECT_THAT(directory.content(name).toStdString(), HasSubstr(": tool " + std::to_string(i)));
        directory.setAge(name, 100 - i);
        write(daemon, "is the newest file");
    }
}

TEST_F(LogRing, ProgramsThatRunAtOnceHaveAFileEach)
{
    for (int i = 0; i < 6; ++i)
        start();
    for (int i = 0; i < 6; ++i)
        write(*logs[static_cast<std::size_t>(i)], QStringLiteral("program %1.").arg(i));
    ASSERT_EQ(directory.files().size(), 6);
    for (int i = 0; i < 6; ++i) {
        const std::string name = "test_" + std::to_string(i) + ".log";
        EXPECT_THAT(content(name.c_str()), HasSubstr("program " + std::to_string(i) + "."));
    }
}

TEST_F(LogRing, ARotationSkipsFilesInUse)
{
    base::KwLogFile& first = start(3); // 0
    write(start(3), "second");         // 1
    write(first, QString(1000001, 'x'));
    write(first, "first");
    EXPECT_THAT(content("test_1.log"), HasSubstr("second"));
    EXPECT_THAT(content("test_2.log"), HasSubstr(": first\n"));
}

TEST_F(LogRing, WithAllFilesInUseAProgramHasADirectoryOfItsOwn)
{
    start(2);
    start(2);
    for (const char* text : {"third", "fourth", "fifth"})
        write(start(2), text);
    const QString own = QFileInfo(platform::programPath()).completeBaseName();
    EXPECT_THAT(content((own + "/test_0.log").toUtf8()), HasSubstr(": third\n"));
    EXPECT_THAT(content((own + "/test_0.log").toUtf8()), HasSubstr("Other programs use all log files"));
    EXPECT_THAT(content((own + "/test_1.log").toUtf8()), HasSubstr(": fourth\n"));
    EXPECT_THAT(content((own + "-2/test_0.log").toUtf8()), HasSubstr(": fifth\n"));
}

TEST_F(LogRing, ALockedFileWithoutANumberIsNotDeleted)
{
    const auto other = platform::PrivateFile::open(directory.path("test_copy.log"));
    ASSERT_TRUE(other->lock());
    runTool("tool", 1);
    EXPECT_TRUE(QFile::exists(directory.path("test_copy.log")));
    EXPECT_THAT(content("test_0.log"), HasSubstr("tool"));
}

TEST_F(LogRing, AnEndedProgramGivesItsFileBack)
{
    start(1);
    logs.clear();
    runTool("next", 1);
    EXPECT_EQ(directory.files(), QStringList("test_0.log"));
    EXPECT_THAT(content("test_0.log"), HasSubstr("next"));
}

// Trouble

TEST_F(LogRing, ARemovedDirectoryIsMadeAgain)
{
    path = directory.path("logs");
    base::KwLogFile& log = start();
    write(log, "lost with the directory");
    if (!QDir(path).removeRecursively())
        GTEST_SKIP() << "this system removes no open file";
    write(log, "afterwards");
    write(log, "and on");
    EXPECT_THAT(content("logs/test_0.log"), HasSubstr(": Next log file. Package"));
    EXPECT_THAT(content("logs/test_0.log"), HasSubstr(": afterwards\n"));
    EXPECT_THAT(content("logs/test_0.log"), HasSubstr(": and on\n"));
}

TEST_F(LogRing, AShutdownDoesNotMakeARemovedDirectoryAgain)
{
    path = directory.path("logs");
    start();
    if (!QDir(path).removeRecursively())
        GTEST_SKIP() << "this system removes no open file";
    logs.clear();
    EXPECT_FALSE(QDir(path).exists());
}

TEST_F(LogRing, AnUnusableDirectoryIsReportedOnceAndLoggingGoesOnWhenItCan)
{
    const support::QtMessages messages;
    path = directory.path("logs");
    directory.put("logs", "in the way");
    base::KwLogFile& log = start();
    write(log, "one");
    write(log, "two");
    ASSERT_EQ(messages.all().size(), 1);
    EXPECT_THAT(messages.all().first().toStdString(),
                HasSubstr("cannot write the log in " + path.toStdString()));

    QFile::remove(path);
    write(log, "three");
    EXPECT_THAT(content("logs/test_0.log"), HasSubstr(": Application started. Package"));
    EXPECT_THAT(content("logs/test_0.log"), HasSubstr(": ___ERROR___ 2 lines could not be written: "));
    EXPECT_THAT(content("logs/test_0.log"), HasSubstr(": three\n"));
    EXPECT_EQ(messages.all().size(), 1);
}

TEST_F(LogRing, AnUnusableVigilLogDirIsReportedOnceAndInTheLog)
{
    const support::QtMessages messages;
    directory.put("obstacle", "in the way");
    const QString wanted = directory.path("obstacle/logs");
    const support::EnvironmentVariable logDir("VIGIL_LOG_DIR", QFile::encodeName(wanted));
    const support::EnvironmentVariable temp("TMPDIR", QFile::encodeName(directory.path()));
    if (QDir::tempPath() != directory.path())
        GTEST_SKIP() << "this system has other directories";
    base::KwLogFile log;
    log.init(QStringLiteral("test"), 10, 1000000, false);
    write(log, "line");
    const std::string expected = "VIGIL_LOG_DIR is \"" + wanted.toStdString() + "\", which cannot be used: ";
    ASSERT_EQ(messages.all().size(), 1);
    EXPECT_THAT(messages.all().first().toStdString(), HasSubstr(expected));
    EXPECT_THAT(content("OrvanData/Logging/kw-vigil-snmp-client/test_0.log"), HasSubstr(expected));
}

// Values from outside

TEST(Printable, ControlCharactersAreEscaped)
{
    EXPECT_EQ(base::printable("a\nb\rc\td\x1b[0m\x7f"), "a\\nb\\rc\\td\\u001b[0m\\u007f");
    EXPECT_EQ(base::printable(QString(QChar(0x2028)) + QChar(0x85)), "\\u2028\\u0085");
    EXPECT_EQ(base::printable(QString(QChar(0))), "\\u0000");
}

TEST(Printable, OtherTextStaysAsItIs)
{
    const QString text = QString::fromUtf8("C:\\temp \"gr\xC3\xBCn\" \xE6\x97\xA5 \xF0\x9F\x98\x80");
    EXPECT_EQ(base::printable(text), text);
}

// Repeated lines

class RepeatedLines : public testing::Test
{
protected:
    static constexpr int longMs = 1000000;

    std::unique_ptr<base::RepeatedLines> limit(int intervalMs)
    {
        const auto write = [this](const QString& text) { written.push_back(text.toStdString()); };
        return std::make_unique<base::RepeatedLines>(write, nullptr, intervalMs);
    }

    std::vector<std::string> written;
};

TEST_F(RepeatedLines, TwoThousandInOneIntervalAreTenLinesAndACount)
{
    const auto lines = limit(longMs);
    for (int i = 0; i < 2000; ++i)
        lines->write(QStringLiteral("garbage number %1.").arg(i));
    ASSERT_THAT(written, SizeIs(10));
    EXPECT_EQ(written.back(), "garbage number 9.");
    lines->finish();
    ASSERT_THAT(written, SizeIs(11));
    EXPECT_EQ(written.back(), "___ERROR___ 1990 more lines like this were left out: garbage number 1999.");
    lines->finish();
    EXPECT_THAT(written, SizeIs(11));
}

TEST_F(RepeatedLines, LinesOfOtherKindsAreWritten)
{
    const auto lines = limit(longMs);
    for (int i = 0; i < 11; ++i)
        lines->write(QStringLiteral("one\n(%1 ms)").arg(i));
    lines->write("two");
    ASSERT_THAT(written, SizeIs(11));
    EXPECT_EQ(written.back(), "two");
}

TEST_F(RepeatedLines, TheCountFollowsWhenTheIntervalIsOver)
{
    const auto lines = limit(1);
    for (int i = 0; i < 11; ++i)
        lines->write("line");
    ASSERT_TRUE(support::runUntil([this] { return written.size() == 11; }));
    EXPECT_EQ(written.back(), "___ERROR___ 1 more lines like this were left out: line");
}

TEST_F(RepeatedLines, AfterAQuietIntervalALineIsWrittenAgain)
{
    const auto lines = limit(1);
    for (int i = 0; i < 11; ++i)
        lines->write("line");
    int polls = 0;
    EXPECT_TRUE(support::runUntil([&] {
        if (++polls % 20 == 0) // many intervals later
            lines->write("line");
        return std::count(written.begin(), written.end(), "line") > 10;
    }));
}
