// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/KwLogFile.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <memory>

#include "LogDirectory.h"
#include "base/BuildInfo.h"
#include "support/EnvironmentVariable.h"
#include "support/MatchesPattern.h"
#include "support/QtMessages.h"

using support::EnvironmentVariable;
using support::MatchesPattern;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

namespace {

constexpr int aMegabyte = 1000000;
const std::string stampPattern = "[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3}";
const std::size_t stampSize = std::string("2000-01-01 00:00:00.000").size();

std::string withoutStamp(const std::string& line)
{
    return line.substr((std::min)(stampSize, line.size()));
}

} // namespace

class KwLogFile : public testing::Test
{
protected:
    KwLogFile() { log->setLogDirectory(directory.path()); }

    bool open(int maxFiles = 10, int maxSize = aMegabyte)
    {
        return log->init(QStringLiteral("test"), maxFiles, maxSize, false);
    }

    void write(const QString& text)
    {
        log->appendLine(text);
        log->writePending();
    }

    /// The log files made since the log was opened.
    QStringList written() const
    {
        QStringList names;
        for (const QString& name : directory.files()) {
            if (directory.content(name) != "old\n")
                names += name;
        }
        return names;
    }

    std::vector<std::string> lines(const char* file = "test_0.log") const
    {
        return directory.lines(QLatin1String(file));
    }

    LogDirectory directory;
    std::unique_ptr<base::KwLogFile> log = std::make_unique<base::KwLogFile>();
};

// Lines

TEST_F(KwLogFile, TheFirstLineNamesThePackage)
{
    EXPECT_TRUE(open());
    ASSERT_THAT(lines(), SizeIs(2));
    EXPECT_THAT(lines()[0], MatchesPattern(stampPattern +
                                           ": Application started\\. Package kw-vigil-snmp-client, version " +
                                           base::buildInfo::version() +
                                           ", local time [0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}\\."));
}

TEST_F(KwLogFile, TheSecondLineNamesTheProcess)
{
    open();
    EXPECT_THAT(lines()[1], MatchesPattern(stampPattern + ": Process [0-9]+, program .*"));
    EXPECT_THAT(lines()[1], HasSubstr(": Process " + std::to_string(QCoreApplication::applicationPid()) +
                                      ", program " + QCoreApplication::applicationFilePath().toStdString()));
}

TEST_F(KwLogFile, ALineIsItsTimeStampAColonAndItsText)
{
    open();
    write("something happened");
    ASSERT_THAT(lines(), SizeIs(3));
    EXPECT_THAT(lines()[2], MatchesPattern(stampPattern + ": something happened"));
    EXPECT_TRUE(directory.content("test_0.log").endsWith("happened\n"));
}

TEST_F(KwLogFile, TimeStampsAreInUtc)
{
    const QDateTime before = QDateTime::currentDateTimeUtc();
    open();
    const QDateTime after = QDateTime::currentDateTimeUtc();
    QDateTime stamp = QDateTime::fromString(QString::fromStdString(lines()[0].substr(0, stampSize)),
                                            QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz"));
    stamp.setTimeSpec(Qt::UTC);
    EXPECT_GE(stamp, before);
    EXPECT_LE(stamp, after);
}

TEST_F(KwLogFile, TextIsWrittenAsUtf8)
{
    open();
    write(QString::fromUtf8("gr\xC3\xBCn"));
    EXPECT_THAT(lines()[2], EndsWith(": gr\xC3\xBCn"));
}

TEST_F(KwLogFile, LinesWaitForTheNextWrite)
{
    open();
    log->appendLine("one");
    log->appendLine("two");
    EXPECT_THAT(lines(), SizeIs(2));
    EXPECT_FALSE(log->writePending());
    ASSERT_THAT(lines(), SizeIs(4));
    EXPECT_EQ(withoutStamp(lines()[2]), ": one");
    EXPECT_EQ(withoutStamp(lines()[3]), ": two");
}

TEST_F(KwLogFile, ALineIsWrittenOnce)
{
    open();
    write("once");
    log->writePending();
    EXPECT_THAT(lines(), SizeIs(3));
}

TEST_F(KwLogFile, WithoutAnOpenFileAWriteDropsPendingLines)
{
    write("dropped");
    open();
    log->writePending();
    EXPECT_THAT(lines(), SizeIs(2));
}

TEST_F(KwLogFile, LinesFromBeforeTheFileIsOpenAreWrittenIfNoWriteDroppedThem)
{
    log->appendLine("early");
    open();
    log->writePending();
    ASSERT_THAT(lines(), SizeIs(3));
    EXPECT_EQ(withoutStamp(lines()[2]), ": early");
}

// Closing

TEST_F(KwLogFile, TheLastLineHasACommaAfterItsTimeStamp)
{
    open();
    EXPECT_TRUE(log->shutdown());
    ASSERT_THAT(lines(), SizeIs(3));
    EXPECT_THAT(lines()[2], MatchesPattern(stampPattern + ", Application termination"));
}

TEST_F(KwLogFile, DestructionClosesTheFile)
{
    open();
    log.reset();
    EXPECT_EQ(withoutStamp(lines().back()), ", Application termination");
}

TEST_F(KwLogFile, TheLastLineGivesTheReason)
{
    open();
    EXPECT_TRUE(log->closeLogFile("Some reason"));
    EXPECT_EQ(withoutStamp(lines().back()), ", Some reason");
}

TEST_F(KwLogFile, ClosingWithoutAnOpenFileFails)
{
    EXPECT_FALSE(log->closeLogFile("reason"));
    EXPECT_FALSE(log->shutdown());
    open();
    log->shutdown();
    EXPECT_FALSE(log->shutdown());
    EXPECT_THAT(lines(), SizeIs(3));
}

TEST_F(KwLogFile, ClosingDropsPendingLines)
{
    open();
    log->appendLine("pending");
    log->shutdown();
    EXPECT_THAT(directory.content("test_0.log").toStdString(), Not(HasSubstr("pending")));
}

TEST_F(KwLogFile, LinesAfterTheEndAreDropped)
{
    open();
    log->shutdown();
    write("too late");
    EXPECT_EQ(withoutStamp(lines().back()), ", Application termination");
}

TEST_F(KwLogFile, CanBeOpenedAgain)
{
    open();
    log->shutdown();
    EXPECT_TRUE(open());
    write("second run");
    EXPECT_EQ(withoutStamp(lines("test_1.log").back()), ": second run");
}

// The ring

TEST_F(KwLogFile, WithoutOlderFilesTheFirstIsNumberZero)
{
    open();
    EXPECT_EQ(directory.files(), QStringList("test_0.log"));
}

TEST_F(KwLogFile, AfterNumberThreeComesFour)
{
    for (int number = 0; number <= 3; ++number)
        directory.putOld(QStringLiteral("test_%1.log").arg(number), 10 - number);
    open();
    EXPECT_EQ(written(), QStringList("test_4.log"));
}

TEST_F(KwLogFile, TheNewestFileByTimeIsFollowedNotTheHighestNumber)
{
    directory.putOld("test_0.log", 30);
    directory.putOld("test_1.log", 1);
    directory.putOld("test_2.log", 20);
    open();
    EXPECT_EQ(written(), QStringList("test_2.log"));
}

TEST_F(KwLogFile, AFullRingOverwritesItsOldestFile)
{
    for (int number = 0; number <= 9; ++number)
        directory.putOld(QStringLiteral("test_%1.log").arg(number), number == 6 ? 100 : 10);
    open();
    EXPECT_EQ(written(), QStringList("test_6.log"));
    EXPECT_THAT(lines("test_6.log"), SizeIs(2));
    EXPECT_EQ(directory.files().size(), 10);
}

TEST_F(KwLogFile, AFullRingReusesFileZeroIfItIsTheOldest)
{
    for (int number = 0; number <= 9; ++number)
        directory.putOld(QStringLiteral("test_%1.log").arg(number), 100 - number);
    open();
    EXPECT_EQ(written(), QStringList("test_0.log"));
}

TEST_F(KwLogFile, AfterTheHighestNumberComesZero)
{
    directory.putOld("test_9.log", 1);
    open();
    EXPECT_EQ(written(), QStringList("test_0.log"));
}

TEST_F(KwLogFile, AfterANumberBeyondTheRingComesZero)
{
    directory.putOld("test_2147483647.log", 1);
    open();
    EXPECT_EQ(written(), QStringList("test_0.log"));
}

TEST_F(KwLogFile, AFullRingDeletesItsOldestFileWhenItHasNoNumber)
{
    directory.putOld("test_old.log", 100);
    directory.putOld("test_1.log", 10);
    directory.putOld("test_2.log", 5);
    open(3);
    EXPECT_EQ(written(), QStringList("test_0.log"));
    EXPECT_EQ(directory.files(), QStringList({"test_0.log", "test_1.log", "test_2.log"}));
}

TEST_F(KwLogFile, ANewestFileWithoutANumberIsFollowedByTheNumberOfFiles)
{
    directory.putOld("test_0.log", 10);
    directory.putOld("test_1.log", 9);
    directory.putOld("test_copy.log", 1);
    open();
    EXPECT_EQ(written(), QStringList("test_3.log"));
}

TEST_F(KwLogFile, FilesOfOtherProgramsAreLeftAlone)
{
    directory.putOld("other_5.log", 1);
    directory.putOld("test_5.txt", 1);
    open();
    EXPECT_EQ(written(), QStringList("test_0.log"));
    EXPECT_EQ(directory.files(), QStringList({"other_5.log", "test_0.log", "test_5.txt"}));
}

// Rotation

TEST_F(KwLogFile, AFileAboveTheSizeLimitIsFollowedByTheNext)
{
    open(10, 10000000);
    write(QString(10000000, 'x'));
    EXPECT_EQ(directory.files(), QStringList({"test_0.log", "test_1.log"}));
    EXPECT_THAT(lines().back(),
                MatchesPattern(stampPattern + ", Reached max size, open the next log file \\.\\.\\."));
    ASSERT_THAT(lines("test_1.log"), SizeIs(2));
    EXPECT_THAT(lines("test_1.log")[0],
                MatchesPattern(stampPattern + ": Next log file\\. Package kw-vigil-snmp-client, version .*, "
                                              "local time .*\\."));
}

TEST_F(KwLogFile, AFileOfExactlyTheSizeIsKept)
{
    open(10, 1000);
    const int used = directory.content("test_0.log").size();
    const int lineOverhead = static_cast<int>(stampSize) + 3;
    write(QString(1000 - used - lineOverhead, 'x'));
    ASSERT_EQ(directory.content("test_0.log").size(), 1000);
    EXPECT_EQ(directory.files(), QStringList("test_0.log"));
    write("one more");
    EXPECT_EQ(directory.files(), QStringList({"test_0.log", "test_1.log"}));
}

TEST_F(KwLogFile, AnEmptyWriteChecksTheSizeToo)
{
    open(10, 1);
    EXPECT_FALSE(log->writePending());
    EXPECT_EQ(directory.files(), QStringList({"test_0.log", "test_1.log"}));
}

TEST_F(KwLogFile, RotationGoesRoundTheRing)
{
    open(3, 200);
    for (int i = 0; i < 4; ++i)
        write(QString(200, QLatin1Char(static_cast<char>('a' + i))));
    EXPECT_EQ(directory.files(), QStringList({"test_0.log", "test_1.log", "test_2.log"}));
    EXPECT_THAT(directory.content("test_0.log").toStdString(), HasSubstr("dddd"));
    EXPECT_THAT(directory.content("test_0.log").toStdString(), Not(HasSubstr("aaaa")));
    EXPECT_THAT(directory.content("test_2.log").toStdString(), HasSubstr("cccc"));
    EXPECT_THAT(lines("test_1.log"), SizeIs(2)); // "bbbb" was overwritten when "dddd" had filled number 0
}

// The directory

TEST_F(KwLogFile, TheDirectoryIsCreated)
{
    log->setLogDirectory(directory.path("a/b/c"));
    EXPECT_TRUE(QDir(directory.path("a/b/c")).exists());
    open();
    EXPECT_TRUE(QFile::exists(directory.path("a/b/c/test_0.log")));
}

TEST_F(KwLogFile, LinesAreLostIfTheFileCannotBeOpened)
{
    const support::QtMessages reported;
    directory.put("obstacle", "a file where a directory should be");
    log->setLogDirectory(directory.path("obstacle/logs"));
    EXPECT_TRUE(open());
    write("lost");
    EXPECT_TRUE(log->shutdown());
}

// The timer

TEST_F(KwLogFile, WithTheTimerPendingLinesAreWrittenEverySixSeconds)
{
    log->init(QStringLiteral("test"), 10, aMegabyte, true);
    const auto* timer = log->findChild<QTimer*>();
    ASSERT_NE(timer, nullptr);
    EXPECT_TRUE(timer->isActive());
    EXPECT_EQ(timer->interval(), 6000);

    log->appendLine("waiting");
    QMetaObject::invokeMethod(log.get(), "slot_TimerWriteFile", Qt::DirectConnection);
    EXPECT_EQ(withoutStamp(lines().back()), ": waiting");
}

TEST_F(KwLogFile, TheTimerWritesPendingLines)
{
    log->init(QStringLiteral("test"), 10, aMegabyte, true);
    log->appendLine("waiting");
    emit log->findChild<QTimer*>()->timeout({});
    EXPECT_EQ(withoutStamp(lines().back()), ": waiting");
}

TEST_F(KwLogFile, WithoutTheTimerPendingLinesStayPending)
{
    open();
    const auto* timer = log->findChild<QTimer*>();
    EXPECT_TRUE(!timer || !timer->isActive());
}

TEST_F(KwLogFile, ShutdownStopsTheTimer)
{
    log->init(QStringLiteral("test"), 10, aMegabyte, true);
    log->shutdown();
    EXPECT_EQ(log->findChild<QTimer*>(), nullptr);
}

TEST_F(KwLogFile, ThePrefixCanComeFromTheApplicationsName)
{
    const QString previous = QCoreApplication::applicationName();
    QCoreApplication::setApplicationName(QStringLiteral("My Application"));
    EXPECT_TRUE(log->initWithApplicationName());
    QCoreApplication::setApplicationName(previous);
    EXPECT_EQ(directory.files(), QStringList("My Application_0.log"));
    EXPECT_NE(log->findChild<QTimer*>(), nullptr);
}

TEST_F(KwLogFile, WithoutANameThePrefixIsTheProgramFile)
{
    const QString previous = QCoreApplication::applicationName();
    QCoreApplication::setApplicationName(QString());
    EXPECT_TRUE(log->initWithApplicationName());
    QCoreApplication::setApplicationName(previous);
    const QString program = QFileInfo(QCoreApplication::applicationFilePath()).baseName();
    EXPECT_EQ(directory.files(), QStringList(program + "_0.log"));
}

// Threads

TEST_F(KwLogFile, LinesOfManyThreadsAreNeverMixed)
{
    open();
    auto expected = writeFromManyThreads([this](const QString& text) { write(text); });
    for (std::string& text : expected)
        text.insert(0, ": ");

    std::vector<std::string> found;
    const auto all = lines();
    std::transform(all.begin() + 2, all.end(), std::back_inserter(found), withoutStamp);
    std::sort(found.begin(), found.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_TRUE(found == expected) << found.size() << " lines";
}

TEST_F(KwLogFile, NoLineOfManyThreadsIsLostWhenTheFileIsFull)
{
    open(10000, 600);
    auto expected = writeFromManyThreads([this](const QString& text) { write(text); });
    log->shutdown();

    std::vector<std::string> found;
    for (const QString& file : directory.files()) {
        for (const std::string& line : directory.lines(file)) {
            const std::string text = withoutStamp(line);
            if (text.rfind(": thread ", 0) == 0)
                found.push_back(text.substr(2));
        }
    }
    EXPECT_GT(directory.files().size(), 500);
    std::sort(found.begin(), found.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_TRUE(found == expected) << found.size() << " lines";
}

TEST_F(KwLogFile, TheProcessHasOneLog)
{
    EXPECT_EQ(&base::KwLogFile::instance(), &base::KwLogFile::instance());
}

// The list of directories

class KwLogFileDirectory : public testing::Test
{
protected:
    KwLogFileDirectory()
        : logDir("VIGIL_LOG_DIR", QByteArray()),
          temp("TMPDIR", QFile::encodeName(directory.path())),
          previousCurrent(QDir::currentPath())
    {
        QDir::setCurrent(directory.path());
    }

    ~KwLogFileDirectory() override { QDir::setCurrent(previousCurrent); }

    QString inTemp(const char* name) const { return directory.path(QLatin1String(name)); }

    LogDirectory directory;
    EnvironmentVariable logDir;
    EnvironmentVariable temp;
    QString previousCurrent;
};

/// The part of the list for systems without drives. LogDirectoryOnDrivesTest.cpp has the rest.
class KwLogFileDirectoryWithoutDrives : public KwLogFileDirectory
{
protected:
    void SetUp() override
    {
        if (QDir::isAbsolutePath(QStringLiteral("C:/OrvanData")))
            GTEST_SKIP() << "this system has drives";
    }
};

namespace {
const char* const startRecord = "kw-vigil-snmp-client_start";
}

TEST_F(KwLogFileDirectory, VigilLogDirGoesBeforeAllOthers)
{
    const QString wanted = inTemp("wanted/here");
    const EnvironmentVariable variable("VIGIL_LOG_DIR", QFile::encodeName(wanted));
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), wanted);
    EXPECT_TRUE(QFile::exists(wanted + '/' + startRecord));
}

TEST_F(KwLogFileDirectory, InitTakesTheDefaultDirectoryUnlessOneIsSet)
{
    const QString wanted = inTemp("wanted");
    const EnvironmentVariable variable("VIGIL_LOG_DIR", QFile::encodeName(wanted));
    base::KwLogFile log;
    log.init(QStringLiteral("test"), 10, aMegabyte, false);
    EXPECT_TRUE(QFile::exists(wanted + "/test_0.log"));
}

TEST_F(KwLogFileDirectoryWithoutDrives, ARelativeVigilLogDirIsSkipped)
{
    const EnvironmentVariable variable("VIGIL_LOG_DIR", "relative/logs");
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), inTemp("OrvanData/Logging/kw-vigil-snmp-client"));
    EXPECT_FALSE(QDir(inTemp("relative")).exists());
}

TEST_F(KwLogFileDirectoryWithoutDrives, AnUnusableVigilLogDirIsSkipped)
{
    directory.put("obstacle", "a file where a directory should be");
    const EnvironmentVariable variable("VIGIL_LOG_DIR", QFile::encodeName(inTemp("obstacle/logs")));
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), inTemp("OrvanData/Logging/kw-vigil-snmp-client"));
}

TEST_F(KwLogFileDirectoryWithoutDrives, NoDriveFolderAppearsWhereThereAreNoDrives)
{
    base::KwLogFile::defaultDirectory();
    EXPECT_FALSE(QDir(inTemp("D:")).exists());
    EXPECT_FALSE(QDir(inTemp("C:")).exists());
}

TEST_F(KwLogFileDirectoryWithoutDrives, TheTemporaryDirectoryFollowsWithTheProductsFolder)
{
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), inTemp("OrvanData/Logging/kw-vigil-snmp-client"));
}

TEST_F(KwLogFileDirectoryWithoutDrives, ThenTheTemporaryDirectoryWithThePackagesFolder)
{
    directory.put("OrvanData", "in the way");
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), inTemp("kw-vigil-snmp-client"));
}

TEST_F(KwLogFileDirectoryWithoutDrives, FallsBackToTheTemporaryDirectoryUntested)
{
    directory.put("OrvanData", "in the way");
    directory.put("kw-vigil-snmp-client", "in the way");
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), directory.path());
    EXPECT_FALSE(QFile::exists(inTemp(startRecord)));
}

TEST_F(KwLogFileDirectory, EachTryAddsALineToTheStartRecord)
{
    const EnvironmentVariable variable("VIGIL_LOG_DIR", QFile::encodeName(directory.path()));
    const QDateTime before = QDateTime::currentDateTime();
    base::KwLogFile::defaultDirectory();
    base::KwLogFile::defaultDirectory();
    const QDateTime after = QDateTime::currentDateTime();
    std::vector<std::string> possible; // in the language of this system, which Qt cannot always read again
    for (qint64 second = before.toSecsSinceEpoch(); second <= after.toSecsSinceEpoch(); ++second)
        possible.push_back("Started: " + QDateTime::fromSecsSinceEpoch(second).toString().toStdString());
    const auto lines = directory.lines(startRecord);
    ASSERT_THAT(lines, SizeIs(2));
    for (const std::string& line : lines)
        EXPECT_THAT(possible, testing::Contains(line));
}

TEST_F(KwLogFileDirectory, ATooLargeStartRecordIsReplaced)
{
    const EnvironmentVariable variable("VIGIL_LOG_DIR", QFile::encodeName(directory.path()));
    directory.put(startRecord, QByteArray(10001, 'x'));
    base::KwLogFile::defaultDirectory();
    EXPECT_TRUE(directory.content(startRecord).startsWith("Started: "));
}

TEST_F(KwLogFileDirectory, AStartRecordOfExactlyTheLimitIsContinued)
{
    const EnvironmentVariable variable("VIGIL_LOG_DIR", QFile::encodeName(directory.path()));
    directory.put(startRecord, QByteArray(10000, 'x'));
    base::KwLogFile::defaultDirectory();
    EXPECT_TRUE(directory.content(startRecord).startsWith("xxx"));
    EXPECT_GT(directory.content(startRecord).size(), 10000);
}

TEST_F(KwLogFileDirectoryWithoutDrives, ADirectoryWithoutAWritableStartRecordIsSkipped)
{
    const EnvironmentVariable variable("VIGIL_LOG_DIR", QFile::encodeName(inTemp("logs")));
    QDir().mkpath(inTemp("logs/kw-vigil-snmp-client_start")); // a directory in the record's place
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), inTemp("OrvanData/Logging/kw-vigil-snmp-client"));
}

TEST(BuildInfo, TheVersionIsThreePartsAndATenDigitStamp)
{
    EXPECT_THAT(base::buildInfo::version(), MatchesPattern("[0-9]+\\.[0-9]+\\.[0-9]+\\.[0-9]{10}"));
    EXPECT_THAT(base::buildInfo::version(), testing::StartsWith("1.0.0."));
}

TEST(BuildInfo, TheBuildDateIsTheDayOfTheStamp)
{
    const std::string version = base::buildInfo::version();
    const std::string date = base::buildInfo::buildDate();
    EXPECT_THAT(date, MatchesPattern("[0-9]{8}"));
    EXPECT_EQ(version.substr(version.rfind('.') + 1, 8), date);
}

TEST(BuildInfo, ThePackageHasItsName)
{
    EXPECT_STREQ(base::buildInfo::packageName(), "kw-vigil-snmp-client");
}
