// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/Logging.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSysInfo>
#include <QTimer>

#include <algorithm>
#include <set>

#include "LogDirectory.h"
#include "base/KwLogFile.h"
#include "support/EnvironmentVariable.h"
#include "support/MatchesPattern.h"
#include "support/QtMessages.h"

using support::MatchesPattern;
using support::QtMessages;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

class Logging : public testing::Test
{
protected:
    Logging() { base::KwLogFile::instance().setLogDirectory(directory.path()); }
    ~Logging() override { base::stopLogging(); }

    std::vector<std::string> lines() const { return directory.lines("kw-vigil-snmp_0.log"); }

    LogDirectory directory;
};

TEST_F(Logging, StartOpensTheFirstFileOfTheRing)
{
    EXPECT_TRUE(base::startLogging());
    EXPECT_EQ(directory.files(), QStringList("kw-vigil-snmp_0.log"));
    ASSERT_THAT(lines(), SizeIs(2));
    EXPECT_THAT(lines()[0], HasSubstr(": Application started. Package kw-vigil-snmp-client, version "));
}

TEST_F(Logging, TheRingHasTenFiles)
{
    for (int number = 0; number < 10; ++number)
        directory.putOld(QStringLiteral("kw-vigil-snmp_%1.log").arg(number), number == 0 ? 100 : 10);
    base::startLogging();
    EXPECT_EQ(directory.files().size(), 10);
    EXPECT_THAT(lines()[0], HasSubstr("Application started."));
}

TEST_F(Logging, AFileIsFollowedByTheNextAtTenMillionBytes)
{
    base::startLogging();
    base::writeLog(QString(9999000, 'x'));
    EXPECT_EQ(directory.files().size(), 1);
    base::writeLog(QString(1000, 'y'));
    EXPECT_EQ(directory.files(), QStringList({"kw-vigil-snmp_0.log", "kw-vigil-snmp_1.log"}));
}

TEST_F(Logging, TheFilesLieInVigilLogDir)
{
    const support::EnvironmentVariable variable("VIGIL_LOG_DIR", QFile::encodeName(directory.path("given")));
    const QtMessages aboutTheEmptyName;
    base::KwLogFile::instance().setLogDirectory(QString());
    base::startLogging();
    EXPECT_TRUE(QFile::exists(directory.path("given/kw-vigil-snmp_0.log")));
    EXPECT_TRUE(QFile::exists(directory.path("given/kw-vigil-snmp-client_start")));
}

TEST_F(Logging, ALineIsInTheFileAtOnce)
{
    base::startLogging();
    EXPECT_FALSE(base::writeLog(QStringLiteral("[Some::method] Something happened.")));
    ASSERT_THAT(lines(), SizeIs(3));
    EXPECT_THAT(lines()[2], EndsWith(": [Some::method] Something happened."));
}

TEST_F(Logging, ALineBeforeTheStartIsDropped)
{
    EXPECT_FALSE(base::writeLog(QStringLiteral("too early")));
    EXPECT_TRUE(directory.files().isEmpty());
    base::startLogging();
    base::writeLog(QStringLiteral("in time"));
    EXPECT_THAT(directory.content("kw-vigil-snmp_0.log").toStdString(), Not(HasSubstr("too early")));
}

TEST_F(Logging, ALineAfterTheStopIsDropped)
{
    base::startLogging();
    EXPECT_TRUE(base::stopLogging());
    base::writeLog(QStringLiteral("too late"));
    EXPECT_THAT(lines().back(), EndsWith(", Application termination"));
}

TEST_F(Logging, StopWithoutAStartFails)
{
    EXPECT_FALSE(base::stopLogging());
}

TEST_F(Logging, AppendedLinesWaitForTheNextLine)
{
    base::startLogging();
    base::KwLogFile::instance().appendLine(QStringLiteral("first"));
    EXPECT_THAT(lines(), SizeIs(2));
    base::writeLog(QStringLiteral("second"));
    ASSERT_THAT(lines(), SizeIs(4));
    EXPECT_THAT(lines()[2], EndsWith(": first"));
    EXPECT_THAT(lines()[3], EndsWith(": second"));
}

TEST_F(Logging, NoTimerWrites)
{
    base::startLogging();
    const auto* timer = base::KwLogFile::instance().findChild<QTimer*>();
    EXPECT_TRUE(!timer || !timer->isActive());
}

TEST_F(Logging, AStartAfterAStopGoesOnWithTheNextFile)
{
    base::startLogging();
    base::stopLogging();
    base::startLogging();
    EXPECT_EQ(directory.files(), QStringList({"kw-vigil-snmp_0.log", "kw-vigil-snmp_1.log"}));
}

TEST_F(Logging, TheMessagesOfQtStayWithTheHost)
{
    const QtMessages messages;
    base::startLogging();
    qWarning("for the host");
    base::writeLog(QStringLiteral("for the log"));
    EXPECT_EQ(messages.all(), QStringList("for the host"));
    EXPECT_THAT(directory.content("kw-vigil-snmp_0.log").toStdString(), Not(HasSubstr("for the host")));
}

TEST_F(Logging, ATypedMessageIsWrittenAfterTheNameOfItsType)
{
    base::startLogging();
    base::logTypedMessage(QtDebugMsg, "a");
    base::logTypedMessage(QtWarningMsg, "b");
    base::logTypedMessage(QtCriticalMsg, "c");
    base::logTypedMessage(QtFatalMsg, "d"); // ends nothing: it is only written
    base::logTypedMessage(QtInfoMsg, "e");
    ASSERT_THAT(lines(), SizeIs(7));
    EXPECT_THAT(lines()[2], EndsWith(": Debug: a"));
    EXPECT_THAT(lines()[3], EndsWith(": Warning: b"));
    EXPECT_THAT(lines()[4], EndsWith(": Critical: c"));
    EXPECT_THAT(lines()[5], EndsWith(": Fatal: d"));
    EXPECT_THAT(lines()[6], EndsWith(": Unknown: e"));
}

TEST_F(Logging, LinesOfManyThreadsAreNeverMixed)
{
    base::startLogging();
    auto expected = writeFromManyThreads([](const QString& text) { base::writeLog(text); });
    std::vector<std::string> found;
    for (const std::string& line : lines()) {
        const std::size_t text = line.find("thread ");
        if (text != std::string::npos)
            found.push_back(line.substr(text));
    }
    std::sort(found.begin(), found.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_TRUE(found == expected) << found.size() << " lines";
}

TEST(LoggingText, MessageTypesHaveNames)
{
    EXPECT_EQ(base::messageTypeName(QtDebugMsg), "Debug");
    EXPECT_EQ(base::messageTypeName(QtWarningMsg), "Warning");
    EXPECT_EQ(base::messageTypeName(QtCriticalMsg), "Critical");
    EXPECT_EQ(base::messageTypeName(QtFatalMsg), "Fatal");
}

TEST(LoggingText, AnyOtherMessageTypeIsUnknown)
{
    EXPECT_EQ(base::messageTypeName(static_cast<QtMsgType>(4)), "Unknown");
    EXPECT_EQ(base::messageTypeName(QtInfoMsg), "Unknown");
    EXPECT_EQ(base::messageTypeName(static_cast<QtMsgType>(7)), "Unknown");
}

TEST(LoggingText, HexadecimalNumbersHaveSixteenDigits)
{
    EXPECT_EQ(base::toHexString(quint64(255)), "0x00000000000000ff");
    EXPECT_EQ(base::toHexString(quint64(0)), "0x0000000000000000");
    EXPECT_EQ(base::toHexString(Q_UINT64_C(0xFEDCBA9876543210)), "0xfedcba9876543210");
}

TEST(LoggingText, PointersAreWrittenAsTheirNumber)
{
    int object = 0;
    const auto number = static_cast<quint64>(reinterpret_cast<quintptr>(&object));
    EXPECT_EQ(base::toHexString(&object), base::toHexString(number));
}

TEST(LoggingText, EachThreadHasItsId)
{
    EXPECT_NE(base::currentThreadId(), 0u);
    EXPECT_EQ(base::currentThreadId(), base::currentThreadId());
    quint32 other = base::currentThreadId();
    std::thread([&other] { other = base::currentThreadId(); }).join();
    EXPECT_NE(other, base::currentThreadId());
}

TEST(LoggingText, SleepTakesAtLeastItsTime)
{
    QElapsedTimer elapsed;
    elapsed.start();
    base::sleepMs(20);
    EXPECT_GE(elapsed.nsecsElapsed(), 20 * 1000000);
}

TEST(LoggingText, ANullNameMeansTheLibrarysModule)
{
    const QString program = QCoreApplication::applicationFilePath(); // the tests link the objects themselves
    EXPECT_EQ(QFileInfo(base::moduleFilePath(nullptr)).canonicalFilePath(),
              QFileInfo(program).canonicalFilePath());
    EXPECT_EQ(base::moduleBaseName(nullptr), QFileInfo(program).baseName());
}

TEST(LoggingText, ALoadedModuleIsFoundByName)
{
    const bool isWindows = QSysInfo::kernelType() == QLatin1String("winnt");
    const QString path = base::moduleFilePath(isWindows ? "Qt5Core.dll" : "libQt5Core.so.5");
    EXPECT_TRUE(QFileInfo(path).isAbsolute()) << path.toStdString();
    EXPECT_TRUE(QFileInfo::exists(path)) << path.toStdString();
    EXPECT_TRUE(base::moduleBaseName(isWindows ? "Qt5Core.dll" : "libQt5Core.so.5").endsWith("Qt5Core"));
}

TEST(LoggingText, AnUnloadedModuleHasNoPath)
{
    EXPECT_EQ(base::moduleFilePath("no-such-module"), "");
    EXPECT_EQ(base::moduleBaseName("no-such-module"), "");
}
