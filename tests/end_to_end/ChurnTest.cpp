// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Applications of several users come, attack each other and go, while managers walk and set values: 100
// steps, or 6000 with VIGIL_LOAD=full, about ten minutes. VIGIL_SEED repeats a run.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTcpSocket>

#include <algorithm>
#include <iostream>
#include <map>
#include <memory>
#include <random>

#include "support/AgentProcess.h"
#include "support/AsUser.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/Load.h"
#include "support/ProcessMemory.h"
#include "support/ReplyTimer.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::AsUser;
using support::enterprise;
using support::FakeApplication;
using support::full;
using support::SnmpTool;

namespace {

constexpr int rowsOfUser = 4;
constexpr int looseCellsOfUser = 40;
const std::string healthTable = "127.3.1.200.4.1.1";
const QString lostSummary = QStringLiteral("No connection to the application since ");

/// One of the users who share the host.
struct User
{
    int number; // from 1
    std::uint32_t id;
};

/// For root three users, otherwise the own one.
std::vector<User> chosenUsers()
{
    if (!support::canActForUsers())
        return {{1, 0}};
    return {{1, support::firstUser}, {2, support::secondUser}, {3, support::secondUser + 1}};
}

unsigned int chosenSeed()
{
    bool isNumber = false;
    const unsigned int seed = qEnvironmentVariable("VIGIL_SEED").toUInt(&isNumber);
    return isNumber ? seed : std::random_device()();
}

/// The index of a check with the keys "u" and "RN", where R is the user's digit and N the row's.
std::string indexOf(int user, int row)
{
    return "1.117.2." + std::to_string('0' + user) + '.' + std::to_string('0' + row);
}

std::string statusCell(int user, int row)
{
    return healthTable + ".3." + indexOf(user, row);
}

std::string summaryCell(int user, int row)
{
    return healthTable + ".4." + indexOf(user, row);
}

/// Outside the tables, so a manager may set it.
std::string settableCell(int user, int row)
{
    return "5." + std::to_string(user) + '.' + std::to_string(row);
}

std::string looseCell(int user, int number)
{
    return "6." + std::to_string(user) + '.' + std::to_string(number);
}

constexpr char markTree[] = "9";

std::string markCell(int user, size_t peer)
{
    return std::string(markTree) + '.' + std::to_string(user) + '.' + std::to_string(peer);
}

/// A health check of a user: what its application has published last, and whether it still lives.
struct Row
{
    std::unique_ptr<FakeApplication> application; // null while there is none
    int status = 0;
    std::string summary; // empty: never published, or withdrawn
    int setValue = 0;

    bool isPublished() const { return !summary.empty(); }
};

struct Peer
{
    int user;
    FakeApplication* application;
};

using Cells = std::map<QString, QString>;

QString valueOf(const Cells& cells, const std::string& relative)
{
    const auto cell = cells.find(full(relative.c_str()));
    return cell == cells.end() ? QString() : cell->second;
}

/// The agent, and the rows of all users. Row 0 of each user is steady: its application stays.
class Churn : public testing::Test
{
protected:
    void SetUp() override
    {
        std::cout << "VIGIL_SEED=" << seed << std::endl;
        // Address sanitizer keeps freed memory in quarantine, which looks like growth.
        qputenv("ASAN_OPTIONS", "quarantine_size_mb=1");
        QFile file(directory.filePath(QStringLiteral("agent.conf")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("rwcommunity private 127.0.0.1\n");
        file.close();
        agent = std::make_unique<AgentProcess>(QStringList{
            QStringLiteral("--config"), file.fileName(), QStringLiteral("--grace"), QStringLiteral("1"),
            QStringLiteral("--set-timeout"), QStringLiteral("60000"), QStringLiteral("--stale-after"),
            QStringLiteral("0"), QStringLiteral("--state-directory"), directory.path()});
        ASSERT_TRUE(agent->start()) << agent->log().constData();
        const QString community = QStringLiteral("private");
        manager = std::make_unique<SnmpTool>(agent->udpAddress(), SnmpTool::community(community));
        replies = std::make_unique<support::ReplyTimer>(agent->udpAddress(), community, agent->processId());
    }

    std::unique_ptr<FakeApplication> connectAs(const User& user) const
    {
        if (user.id == 0)
            return std::make_unique<FakeApplication>(agent->applicationPort());
        const AsUser other(user.id);
        return std::make_unique<FakeApplication>(agent->applicationPort());
    }

    int choose(int count) { return static_cast<int>(random() % static_cast<unsigned int>(count)); }
    Row& rowOf(const User& user, int row) { return rows[{user.number, row}]; }

    // --- What the owners do

    void publish(const User& user, int number)
    {
        Row& row = rowOf(user, number);
        if (!row.application)
            row.application = connectAs(user);
        row.status = choose(3);
        row.setValue = 0;
        row.summary = "user " + std::to_string(user.number) + " says " + std::to_string(100'000 + ++m_said);
        row.application->publish(statusCell(user.number, number), row.status);
        row.application->publish(summaryCell(user.number, number), row.summary);
        row.application->publish(settableCell(user.number, number), row.setValue);
    }

    void withdraw(const User& user, int number)
    {
        Row& row = rowOf(user, number);
        if (!row.application)
            publish(user, number); // only then it can withdraw the lost cells
        row.application->unset("");
        row.summary.clear();
    }

    void crash(const User& user, int number)
    {
        Row& row = rowOf(user, number);
        row.application.reset();
        row.setValue = 0;
    }

    void actAsOwner(const User& user, int number)
    {
        const int action = choose(10);
        if (action < 6)
            publish(user, number);
        else if (action < 8)
            withdraw(user, number);
        else
            crash(user, number);
    }

    // --- What attackers do

    /// Tries to change a row of another user.
    void attack(FakeApplication& attacker, const User& victim, int number)
    {
        if (!rowOf(victim, number).isPublished())
            return; // the first one may have it
        attacker.publish(statusCell(victim.number, number), choose(3));
        attacker.publish(summaryCell(victim.number, number), std::string("all is well"));
        attacker.publishAndNotify(settableCell(victim.number, number), 666);
        attacker.unset(choose(2) == 0 ? "" : statusCell(victim.number, number));
    }

    void attackOthers(const User& user)
    {
        const std::unique_ptr<FakeApplication>& attacker = attackers[user.number] = connectAs(user);
        for (const User& victim : users) {
            for (int number = 0; victim.number != user.number && number < rowsOfUser; ++number)
                attack(*attacker, victim, number);
        }
    }

    /// Many changes of cells nobody else has. Half of the time they are left to the agent.
    void flood(const User& user)
    {
        const std::unique_ptr<FakeApplication>& flooder = flooders[user.number] = connectAs(user);
        for (int i = 0; i < 500; ++i)
            flooder->publish(looseCell(user.number, choose(looseCellsOfUser)),
                             std::string(static_cast<size_t>(choose(200)), 'x'));
        if (choose(2) == 0)
            flooder->unset("");
    }

    /// Half a frame, or none at all.
    void sendGarbage(const User& user)
    {
        halfFrames[user.number] = connectAs(user);
        QByteArray bytes;
        for (int i = choose(64); i > 0; --i)
            bytes += static_cast<char>(random());
        if (choose(2) == 0)
            bytes.prepend(base::FrameHeader().toBytes(100'000));
        halfFrames[user.number]->sendBytes(bytes);
    }

    // --- What managers see

    /// Waits until the agent has read everything.
    void settle()
    {
        const std::vector<Peer> peers = connectedPeers();
        const int mark = ++m_marks;
        for (size_t i = 0; i < peers.size(); ++i)
            peers[i].application->publish(markCell(peers[i].user, i), mark);
        EXPECT_TRUE(support::askUntil([&] {
            const QStringList marks = manager->walk(full(markTree)).filter(QStringLiteral(" %1").arg(mark));
            return marks.size() == static_cast<int>(peers.size());
        }));
        for (size_t i = 0; i < peers.size(); ++i)
            peers[i].application->unset(markCell(peers[i].user, i));
    }

    std::vector<Peer> connectedPeers() const
    {
        std::vector<Peer> peers;
        for (const auto& [place, row] : rows)
            peers.push_back({place.first, row.application.get()});
        for (const auto& [user, attacker] : attackers)
            peers.push_back({user, attacker.get()});
        for (const auto& [user, flooder] : flooders)
            peers.push_back({user, flooder.get()});
        peers.erase(
            std::remove_if(peers.begin(), peers.end(), [](const Peer& peer) { return !peer.application; }),
            peers.end());
        return peers;
    }

    Cells walk() const
    {
        Cells cells;
        for (const QString& line : manager->walk(enterprise)) {
            const int blank = line.indexOf(QLatin1Char(' '));
            cells[line.left(blank)] = line.mid(blank + 1).remove(QLatin1Char('"'));
        }
        return cells;
    }

    /// True if the agent has covered a row during the walk, which reads the statuses before the summaries.
    bool isTorn(const Cells& cells) const
    {
        return std::any_of(rows.begin(), rows.end(), [&](const auto& entry) {
            const auto& [user, number] = entry.first;
            return valueOf(cells, summaryCell(user, number)).startsWith(lostSummary) &&
                   valueOf(cells, statusCell(user, number)) != QLatin1String("3");
        });
    }

    Cells walkWhole() const
    {
        Cells cells;
        support::askUntil([&] {
            cells = walk();
            return !isTorn(cells);
        });
        return cells;
    }

    /// All rows say what their owners said or that these are lost.
    void expectTrue(const Cells& cells) const
    {
        for (const auto& [place, row] : rows) {
            const auto& [user, number] = place;
            SCOPED_TRACE("user " + std::to_string(user) + ", row " + std::to_string(number));
            const QString summary = valueOf(cells, summaryCell(user, number));
            const bool isLost = !row.application && summary.startsWith(lostSummary);
            const QString status = isLost ? QStringLiteral("3") : QString::number(row.status);
            EXPECT_EQ(valueOf(cells, statusCell(user, number)), row.isPublished() ? status : QString());
            EXPECT_EQ(valueOf(cells, settableCell(user, number)),
                      row.isPublished() ? QString::number(row.setValue) : QString());
            EXPECT_EQ(summary, isLost ? summary : QString::fromStdString(row.summary));
        }
    }

    /// No row shows any longer what a lost application said.
    bool isEachLossShown() const
    {
        const Cells cells = walk();
        return std::all_of(rows.begin(), rows.end(), [&](const auto& entry) {
            const auto& [place, row] = entry;
            const QString summary = valueOf(cells, summaryCell(place.first, place.second));
            return row.application || !row.isPublished() || summary.startsWith(lostSummary);
        });
    }

    /// The owner takes the value. Without an owner nothing changes.
    void setAsManager(const User& user, int number)
    {
        Row& row = rowOf(user, number);
        const QString id = full(settableCell(user.number, number).c_str());
        const int value = 1 + choose(1000);
        const SnmpTool::Result result = manager->set({id, QStringLiteral("i"), QString::number(value)});
        EXPECT_EQ(result.exitCode == 0, row.application && row.isPublished()) << qPrintable(result.err);
        if (result.exitCode != 0)
            return;
        row.setValue = value;
        EXPECT_TRUE(support::runUntil([&] {
            const auto& commits = row.application->commits();
            return !commits.empty() && commits.back().value == std::to_string(value);
        }));
    }

    void expectNoQuestions()
    {
        for (const auto& [user, attacker] : attackers)
            EXPECT_TRUE(!attacker || attacker->questions().empty()) << user;
    }

    void expectPromptReply()
    {
        constexpr qint64 promptMs = 250;
        const std::optional<qint64> ms = replies->measureMs();
        ASSERT_TRUE(ms);
        EXPECT_LE(*ms, promptMs);
        longestReplyMs = std::max(longestReplyMs, *ms);
    }

    // --- The run

    void step()
    {
        for (const User& user : users)
            actAsOwner(user, 1 + choose(rowsOfUser - 1));
        const User& steady = users[static_cast<size_t>(choose(static_cast<int>(users.size())))];
        publish(steady, 0);
        walk(); // meets all of this on its way
        settle();
        const User& user = users[static_cast<size_t>(choose(static_cast<int>(users.size())))];
        attackOthers(user);
        sendGarbage(user);
        flood(user);
        expectPromptReply(); // beside all of this
        setAsManager(steady, choose(rowsOfUser));
        settle();
        flooders.clear();
        expectTrue(walkWhole());
        expectNoQuestions();
    }

    /// Each user withdraws everything but its steady row, and all strangers leave.
    void cleanUp()
    {
        attackers.clear();
        halfFrames.clear();
        for (const User& user : users) {
            publish(user, 0);
            for (int i = 0; i < looseCellsOfUser; ++i)
                rowOf(user, 0).application->publish(looseCell(user.number, i), 0);
            rowOf(user, 0).application->unset("6");
            for (int number = 1; number < rowsOfUser; ++number)
                withdraw(user, number);
        }
        settle();
        for (const User& user : users) {
            for (int number = 1; number < rowsOfUser; ++number)
                crash(user, number);
        }
        EXPECT_TRUE(support::askUntil(
            [this] { return manager->walk(full(markTree)).filter(QStringLiteral("No Such")).size() == 1; }));
    }

    qint64 agentValue(const char* name) const
    {
        return manager->get(QStringLiteral("VIGIL-AGENT-MIB::vigilAgent") + QLatin1String(name)).toLongLong();
    }

    int descriptors() const
    {
        return QDir(QStringLiteral("/proc/%1/fd").arg(agent->processId()))
            .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
            .size();
    }

    const unsigned int seed = chosenSeed();
    std::mt19937 random{seed};
    const QTemporaryDir directory;
    const std::vector<User> users = chosenUsers();
    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<SnmpTool> manager;
    std::unique_ptr<support::ReplyTimer> replies;
    qint64 longestReplyMs = 0;
    std::map<std::pair<int, int>, Row> rows; // by user and number
    std::map<int, std::unique_ptr<FakeApplication>> attackers;
    std::map<int, std::unique_ptr<FakeApplication>> flooders;
    std::map<int, std::unique_ptr<FakeApplication>> halfFrames;

private:
    int m_said = 0;
    int m_marks = 0;
};

} // namespace

TEST_F(Churn, EveryRowIsItsOwnersAndNothingIsLeft)
{
    const int steps = support::isFullLoad() ? 6000 : 100;
    cleanUp();
    const qint64 memory = agentValue("Memory.0");
    const int descriptorsBefore = descriptors();
    std::optional<qint64> resident;
    for (int i = 1; i <= steps && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        step();
        if (i == steps / 3)
            resident = support::residentKilobytes(agent->processId());
    }
    EXPECT_TRUE(support::askUntil([this] { return isEachLossShown(); }));
    expectTrue(walkWhole());
    cleanUp();
    expectTrue(walkWhole());
    EXPECT_EQ(agentValue("TakeoversRefused.0") > 0, users.size() > 1);
    EXPECT_GT(agentValue("ProtocolErrors.0"), 0);
    EXPECT_TRUE(support::askUntil([&] { return agentValue("Memory.0") == memory; }))
        << agentValue("Memory.0") << " kB, before " << memory;
    EXPECT_TRUE(support::runUntil([&] { return descriptors() == descriptorsBefore; })) << descriptors();
    const std::optional<qint64> residentAtTheEnd = support::residentKilobytes(agent->processId());
    std::cout << steps << " steps, " << resident.value_or(0) << " kB after a third, "
              << residentAtTheEnd.value_or(0) << " kB at the end, longest reply " << longestReplyMs
              << " ms\n";
    if (resident && residentAtTheEnd) {
        constexpr qint64 noise = 2048;
        EXPECT_LE(*residentAtTheEnd, *resident + *resident / 20 + noise);
    }
    EXPECT_EQ(agent->stop(), 0) << agent->log().right(2000).constData();
}
