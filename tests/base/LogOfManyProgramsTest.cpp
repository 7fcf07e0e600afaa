// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The log of several processes, and of several users where the tests may change the user.

#include <gmock/gmock.h>

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <memory>
#include <vector>

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "LogDirectory.h"
#include "support/Deadline.h"

using testing::HasSubstr;

namespace {

constexpr int firstUser = 51001; // no user of this host, most likely
constexpr int secondUser = 51002;

/// A running LogProgram, by default of the tests' own user.
class LogProgram
{
public:
    LogProgram(const QString& line, const QProcessEnvironment& environment, int user = 0)
    {
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        if (user == 0)
            m_process.start(QStringLiteral(LOG_PROGRAM), {line});
        else
            m_process.start(QStringLiteral("setpriv"), asUser(user) + QStringList{LOG_PROGRAM, line});
    }

    static QStringList asUser(int user)
    {
        const QString id = QString::number(user);
        return {QStringLiteral("--reuid"), id, QStringLiteral("--regid"), id,
                QStringLiteral("--clear-groups")};
    }

    bool waitForReady()
    {
        while (!m_process.canReadLine() && m_process.waitForReadyRead(support::deadlineMs)) {
        }
        return m_process.readLine() == "ready\n";
    }

    bool finish()
    {
        m_process.closeWriteChannel();
        return m_process.waitForFinished(support::deadlineMs) && m_process.exitCode() == 0;
    }

    void kill()
    {
        m_process.kill();
        m_process.waitForFinished(support::deadlineMs);
    }

private:
    QProcess m_process;
};

void makeShared(const QString& path)
{
    ASSERT_EQ(chmod(QFile::encodeName(path).constData(), 01777), 0);
}

unsigned int modeOf(const QString& path)
{
    struct stat info
    {
    };
    return stat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_mode & 07777U : 0;
}

int ownerOf(const QString& path)
{
    return static_cast<int>(QFileInfo(path).ownerId());
}

} // namespace

class LogOfManyPrograms : public testing::Test
{
protected:
    QProcessEnvironment withVariable(const char* name) const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("VIGIL_LOG_DIR"));
        environment.insert(QLatin1String(name), directory.path());
        return environment;
    }

    LogDirectory directory;
};

TEST_F(LogOfManyPrograms, SixStartedAtOnceHaveAFileEach)
{
    std::vector<std::unique_ptr<LogProgram>> programs;
    for (int i = 0; i < 6; ++i)
        programs.push_back(
            std::make_unique<LogProgram>(QStringLiteral("line %1").arg(i), withVariable("VIGIL_LOG_DIR")));
    for (auto& program : programs)
        EXPECT_TRUE(program->waitForReady());
    for (auto& program : programs)
        EXPECT_TRUE(program->finish());
    int filesInUse = 0;
    for (const QString& name : directory.files().filter(QLatin1String(".log"))) {
        const QByteArray content = directory.content(name);
        if (content.isEmpty())
            continue; // its program met another one looking for a free file, and took the next
        ++filesInUse;
        EXPECT_EQ(content.count(": line "), 1) << name.toStdString();
        EXPECT_FALSE(content.contains('\0')) << name.toStdString();
    }
    EXPECT_EQ(filesInUse, 6);
}

TEST_F(LogOfManyPrograms, AKilledProgramLeavesItsFileToTheRing)
{
    LogProgram killed(QStringLiteral("killed"), withVariable("VIGIL_LOG_DIR"));
    ASSERT_TRUE(killed.waitForReady());
    killed.kill();
    for (int number = 1; number <= 9; ++number)
        directory.put(QStringLiteral("kw-vigil-snmp_%1.log").arg(number), "newer");
    directory.setAge("kw-vigil-snmp_0.log", 100);
    LogProgram next(QStringLiteral("next"), withVariable("VIGIL_LOG_DIR"));
    ASSERT_TRUE(next.waitForReady());
    EXPECT_THAT(directory.content("kw-vigil-snmp_0.log").toStdString(), HasSubstr(": next\n"));
    EXPECT_TRUE(next.finish());
}

/// A temporary directory that users share.
class LogOfManyUsers : public LogOfManyPrograms
{
protected:
    void SetUp() override
    {
        if (geteuid() != 0)
            GTEST_SKIP() << "only root can run programs of other users";
        if (QStandardPaths::findExecutable(QStringLiteral("setpriv")).isEmpty())
            GTEST_SKIP() << "setpriv is missing";
        if (QProcess::execute(QStringLiteral("setpriv"),
                              LogProgram::asUser(firstUser) + QStringList{"test", "-x", LOG_PROGRAM}) != 0)
            GTEST_SKIP() << "other users cannot run " << LOG_PROGRAM;
        makeShared(directory.path());
        if (QProcess::execute(QStringLiteral("setpriv"),
                              LogProgram::asUser(firstUser) + QStringList{"test", "-w", directory.path()}) !=
            0)
            GTEST_SKIP() << "other users cannot write in the temporary folder";
    }

    void run(const QString& line, int user)
    {
        LogProgram program(line, withVariable("TMPDIR"), user);
        EXPECT_TRUE(program.waitForReady());
        EXPECT_TRUE(program.finish());
    }

    void makeDirectoryOf(int user, const char* name)
    {
        const QString path = directory.path(QLatin1String(name));
        QDir().mkdir(path);
        makeShared(path);
        chmod(QFile::encodeName(path).constData(), 0777);
        ASSERT_EQ(
            chown(QFile::encodeName(path).constData(), static_cast<uid_t>(user), static_cast<gid_t>(user)),
            0);
    }

    void expectLog(const char* logDirectory, const char* line, int user)
    {
        const QString file =
            directory.path(QLatin1String(logDirectory)) + QStringLiteral("/kw-vigil-snmp_0.log");
        EXPECT_EQ(ownerOf(file), user) << logDirectory;
        EXPECT_EQ(modeOf(file), 0600U);
        EXPECT_EQ(modeOf(directory.path(QLatin1String(logDirectory))), 0700U);
        EXPECT_THAT(directory.content(QLatin1String(logDirectory) + QStringLiteral("/kw-vigil-snmp_0.log"))
                        .toStdString(),
                    HasSubstr(std::string(": ") + line + "\n"));
    }
};

TEST_F(LogOfManyUsers, EachHasADirectoryOfItsOwn)
{
    run("root's", 0);
    run("first", firstUser);
    run("second", secondUser);
    expectLog("OrvanData/Logging/kw-vigil-snmp-client", "root's", 0);
    expectLog("kw-vigil-snmp-client", "first", firstUser);
    expectLog("kw-vigil-snmp-client-user51002", "second", secondUser);
}

TEST_F(LogOfManyUsers, ADirectoryOfAnotherUserDoesNotCount)
{
    makeDirectoryOf(firstUser, "OrvanData");
    makeDirectoryOf(firstUser, "kw-vigil-snmp-client");
    directory.put("victim", "precious");
    for (int number = 0; number < 10; ++number)
        QFile::link(directory.path("victim"),
                    directory.path("kw-vigil-snmp-client/kw-vigil-snmp_%1.log").arg(number));
    run("root's", 0);
    EXPECT_EQ(directory.content("victim"), "precious");
    expectLog("kw-vigil-snmp-client-user0", "root's", 0);
}

TEST_F(LogOfManyUsers, ALinkOfAnotherUserIsNotFollowed)
{
    QDir().mkdir(directory.path("home"));
    const QByteArray link = QFile::encodeName(directory.path("OrvanData"));
    QFile::link(directory.path("home"), directory.path("OrvanData"));
    ASSERT_EQ(lchown(link.constData(), firstUser, firstUser), 0);
    run("root's", 0);
    EXPECT_FALSE(QFileInfo::exists(directory.path("home/Logging")));
    expectLog("kw-vigil-snmp-client", "root's", 0);
}

TEST_F(LogOfManyUsers, ASetUserIdProgramDoesNotTrustItsEnvironment)
{
    struct statvfs system = {};
    ASSERT_EQ(statvfs(QFile::encodeName(directory.path()).constData(), &system), 0);
    if ((system.f_flag & (ST_NOEXEC | ST_NOSUID)) != 0)
        GTEST_SKIP() << "the temporary folder permits no set-user-id programs";
    const QString copy = directory.path("set-user-id-program");
    ASSERT_TRUE(QFile::copy(QStringLiteral(LOG_PROGRAM), copy));
    QProcess process;
    for (const unsigned int mode : {0755U, 04755U}) {
        ASSERT_EQ(chmod(QFile::encodeName(copy).constData(), mode), 0);
        process.start(QStringLiteral("setpriv"),
                      LogProgram::asUser(firstUser) + QStringList{copy, QStringLiteral("--set-user-id")});
        ASSERT_TRUE(process.waitForFinished(support::deadlineMs));
        EXPECT_EQ(process.readAllStandardOutput(), mode == 0755U ? "plain\n" : "set-user-id\n");
    }
}
