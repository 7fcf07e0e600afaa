// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The list of log directories on a system with drives. The tests make drive D: and the product's folders on
// both drives appear and disappear, so only one of them may run at a time.

#include "base/KwLogFile.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <windows.h>

#include <string>

#include "support/QtPrinters.h"

namespace {

const QString onC = QStringLiteral("C:/OrvanData");
const QString onD = QStringLiteral("D:/OrvanData");
const QString logging = QStringLiteral("/Logging/kw-vigil-snmp-client");
const QString nonAscii = QString::fromUtf8("J\xC3\xBCrgen \xC5\x81ukasz \xE6\x97\xA5\xE6\x9C\xAC");

/// Sets a variable with any characters, for the system and for the C library, and takes it back at the end.
class WideVariable
{
public:
    WideVariable(const wchar_t* name, const QString& value) : m_name(name)
    {
        const wchar_t* previous = _wgetenv(name);
        m_previous = previous ? previous : L"";
        set(value.toStdWString());
    }
    ~WideVariable() { set(m_previous); }
    WideVariable(const WideVariable&) = delete;
    WideVariable& operator=(const WideVariable&) = delete;

private:
    void set(const std::wstring& value)
    {
        _wputenv_s(m_name, value.c_str());
        SetEnvironmentVariableW(m_name, value.c_str());
    }

    const wchar_t* const m_name;
    std::wstring m_previous;
};

/// Drive D:. Under Wine a drive works as long as its folder exists.
class DriveD
{
public:
    DriveD() { QDir().mkpath(folder()); }
    ~DriveD() { QDir(folder()).removeRecursively(); }
    DriveD(const DriveD&) = delete;
    DriveD& operator=(const DriveD&) = delete;

    static QString folder() { return QStringLiteral(DRIVE_D_FOLDER); }
};

void put(const QString& fileName)
{
    QFile file(fileName);
    file.open(QIODevice::WriteOnly);
}

} // namespace

class LogDirectoryOnDrives : public testing::Test
{
protected:
    void SetUp() override
    {
        removeFolderOnC();
        QDir(DriveD::folder()).removeRecursively();
    }

    void TearDown() override { removeFolderOnC(); }

    QString inTemp(const QString& name) const { return QDir(m_temp.path()).filePath(name); }

    QTemporaryDir m_temp;
    const WideVariable m_noLogDir{L"VIGIL_LOG_DIR", QString()};
    const WideVariable m_tmp{L"TMP", m_temp.path()};

private:
    static void removeFolderOnC()
    {
        QDir(onC).removeRecursively();
        QFile::remove(onC);
    }
};

TEST_F(LogDirectoryOnDrives, WithoutDriveDItIsOnC)
{
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), onC + logging);
    EXPECT_TRUE(QDir(onC + logging).exists());
}

TEST_F(LogDirectoryOnDrives, AFolderOnCIsTakenWhenThereIsNoneOnD)
{
    const DriveD drive;
    QDir().mkpath(onC);
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), onC + logging);
    EXPECT_FALSE(QDir(onD).exists());
}

TEST_F(LogDirectoryOnDrives, DriveDComesFirstWhenNeitherHasTheFolder)
{
    const DriveD drive;
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), onD + logging);
    EXPECT_TRUE(QDir(DriveD::folder() + QStringLiteral("/OrvanData") + logging).exists());
    EXPECT_FALSE(QDir(onC).exists());
}

TEST_F(LogDirectoryOnDrives, DriveDComesFirstWhenBothHaveTheFolder)
{
    const DriveD drive;
    ASSERT_TRUE(QDir().mkpath(onD));
    QDir().mkpath(onC);
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), onD + logging);
}

TEST_F(LogDirectoryOnDrives, AnUnusableFolderOnDIsPassedOverForC)
{
    const DriveD drive;
    ASSERT_TRUE(QDir().mkpath(onD));
    put(onD + QStringLiteral("/Logging"));
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), onC + logging);
}

TEST_F(LogDirectoryOnDrives, WithoutAUsableDriveItIsInTheTemporaryFolder)
{
    put(onC);
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), inTemp(QStringLiteral("OrvanData")) + logging);
}

TEST_F(LogDirectoryOnDrives, ThenInThePackagesOwnTemporaryFolder)
{
    put(onC);
    put(inTemp(QStringLiteral("OrvanData")));
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), inTemp(QStringLiteral("kw-vigil-snmp-client")));
}

TEST_F(LogDirectoryOnDrives, FallsBackToTheTemporaryFolder)
{
    put(onC);
    put(inTemp(QStringLiteral("OrvanData")));
    put(inTemp(QStringLiteral("kw-vigil-snmp-client")));
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), m_temp.path());
}

TEST_F(LogDirectoryOnDrives, TheTemporaryFolderMayHaveAnyCharactersInItsPath)
{
    put(onC);
    const QString temp = inTemp(nonAscii) + QStringLiteral("/AppData/Local/Temp");
    QDir().mkpath(temp);
    const WideVariable variable(L"TMP", temp);
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), temp + QStringLiteral("/OrvanData") + logging);
    EXPECT_TRUE(QDir(temp + QStringLiteral("/OrvanData") + logging).exists());
}

TEST_F(LogDirectoryOnDrives, VigilLogDirMayHaveAnyNameAndComesFirst)
{
    QDir().mkpath(onC);
    const WideVariable variable(L"VIGIL_LOG_DIR", inTemp(nonAscii));
    base::KwLogFile log;
    log.init(nonAscii, 10, 1000, false);
    EXPECT_TRUE(QFile::exists(inTemp(nonAscii) + QLatin1Char('/') + nonAscii + QStringLiteral("_0.log")));
    EXPECT_FALSE(QDir(onC + logging).exists());
}

TEST_F(LogDirectoryOnDrives, ThePathMayBeLongerThanWindowsOnceAllowed)
{
    QString path = m_temp.path();
    while (path.size() < 400)
        path += QLatin1Char('/') + QString(40, QLatin1Char('x'));
    const WideVariable variable(L"VIGIL_LOG_DIR", path);
    EXPECT_EQ(base::KwLogFile::defaultDirectory(), path);
    base::KwLogFile log;
    log.init(QStringLiteral("test"), 10, 200, false);
    log.appendLine(QString(200, QLatin1Char('y')));
    log.writePending(); // is too much for one file
    log.shutdown();
    QFile second(path + QStringLiteral("/test_1.log"));
    ASSERT_TRUE(second.open(QIODevice::ReadOnly));
    EXPECT_TRUE(second.readAll().endsWith(", Application termination\n"));
}
