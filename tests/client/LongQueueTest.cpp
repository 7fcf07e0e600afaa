// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <QCoreApplication>

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "base/ThreadSafety.h"
#include "base/wire/Protocol.h"
#include "support/Deadline.h"
#include "support/LibraryTest.h"
#include "support/Oids.h"
#include "support/ProcessMemory.h"
#include "support/ScriptedCallbacks.h"
#include "support/ShownCells.h"

using support::below;
using support::Recorder;
using support::ScriptedCallback;
using support::set;
using support::ShownCells;
using support::unset;
using support::withTrap;
using testing::ElementsAreArray;
using vigil::Oid;

namespace {

/// A library whose client thread can be blocked, as by a handler of the application that hangs.
class LongQueue : public support::LibraryTest
{
protected:
    inline static const std::string gateOid = "0.1";   // of a callback that blocks the client thread
    inline static const std::string fillerOid = "0.2"; // of the values that fill the queue

    LongQueue()
    {
        start();
        callback.onCall = [this] {
            m_entered.release();
            m_leave.tryAcquire(1, support::deadlineMs);
            onLeave();
        };
        facade.registerValueChangedCallback(below(gateOid), &callback);
    }

    ~LongQueue() override
    {
        unblock();
        facade.deregisterValueChangedCallback(&callback);
    }

    void block()
    {
        if (m_isBlocked)
            return;
        service.send(base::SnmpIntType, support::encodedInt(gateOid, 1), base::PlainValue);
        ASSERT_TRUE(m_entered.tryAcquire(1, support::deadlineMs));
        m_isBlocked = true;
    }

    void unblock()
    {
        if (m_isBlocked)
            m_leave.release();
        m_isBlocked = false;
    }

    /// More than the queue takes.
    void fill()
    {
        const std::string text(100000, 'x');
        for (int i = 0; i < 200; ++i)
            facade.sendValue(below(fillerOid), text, 0);
    }

    std::vector<std::string> publicationsAfterFiller()
    {
        std::vector<std::string> lines = publications();
        const auto isFiller = [](const std::string& line) { return line.rfind(fillerOid + " ", 0) == 0; };
        lines.erase(std::remove_if(lines.begin(), lines.end(), isFiller), lines.end());
        return lines;
    }

    Recorder recorder;
    ScriptedCallback callback{recorder};
    std::function<void()> onLeave = [] {}; // the end of the callback

private:
    base::Semaphore m_entered;
    base::Semaphore m_leave;
    bool m_isBlocked = false;
};

TEST_F(LongQueue, EndsWithTheLastValueOfEachIdentifierInTheOrderOfPublishing)
{
    block();
    fill();
    for (int value = 0; value < 100; ++value)
        facade.sendValue(below("2"), value, 0);
    facade.sendValue(below("1"), "text", 0);
    unblock();
    EXPECT_THAT(publicationsAfterFiller(), ElementsAreArray({set("2", 99), set("1", "text")}));
}

TEST_F(LongQueue, KeepsWithdrawals)
{
    facade.sendValue(below("1"), 5, 0);
    facade.sendValue(below("2.1"), 5, 0);
    publications();
    block();
    fill();
    facade.unsetOid(below("1"));
    facade.sendValue(below("2.1"), 6, 0);
    facade.unsetOidTree(below("2"));
    facade.sendValue(below("2.2"), 7, 0);
    unblock();
    EXPECT_THAT(publicationsAfterFiller(), ElementsAreArray({unset("1"), unset("2"), set("2.2", 7)}));
}

TEST_F(LongQueue, KeepsTheWishForANotification)
{
    block();
    fill();
    facade.sendValue(below("1"), 5, 1);
    facade.sendValue(below("1"), 6, 0);
    unblock();
    EXPECT_THAT(publicationsAfterFiller(), ElementsAreArray({withTrap(set("1", 6))}));
}

// The value of a callback arrived before older ones, and these stayed.
TEST_F(LongQueue, IsNotOvertakenByACallback)
{
    onLeave = [this] {
        facade.sendValue(below("1"), 6, 0);
        facade.unsetOid(below("2"));
    };
    block();
    facade.sendValue(below("1"), 5, 0);
    facade.sendValue(below("2"), 5, 0);
    unblock();
    EXPECT_THAT(publications(), ElementsAreArray({set("1", 5), set("2", 5), set("1", 6), unset("2")}));
}

TEST_F(LongQueue, IsNotOvertakenByACallbackBeyondItsEnd)
{
    onLeave = [this] { facade.sendValue(below("1"), 6, 0); };
    block();
    fill();
    facade.sendValue(below("1"), 5, 0);
    unblock();
    EXPECT_EQ(publicationsAfterFiller().back(), set("1", 6));
}

TEST_F(LongQueue, LetsACallbackPublishAtOnceWhileItIsEmpty)
{
    callback.onCall = [this] { facade.sendValue(below("1"), 6, 0); };
    validate(gateOid, 1);
    const std::vector<support::FakeService::Frame> frames = service.frames();
    ASSERT_GE(frames.size(), 2u);
    EXPECT_EQ(support::describe(frames[frames.size() - 2]), set("1", 6)); // before the answer
}

TEST_F(LongQueue, IsSentBeforeTheLibraryStops)
{
    block();
    fill();
    facade.sendValue(below("1"), 5, 0);
    unblock();
    facade.cleanup();
    ASSERT_TRUE(service.waitForDisconnections(1));
    EXPECT_EQ(publicationsSoFar().back(), set("1", 5));
}

TEST_F(LongQueue, TakesValuesAsBeforeOnceItIsShortAgain)
{
    block();
    fill();
    unblock();
    publications();
    facade.sendValue(below("1"), 5, 0);
    facade.sendValue(below("1"), 6, 0);
    EXPECT_THAT(publications(), ElementsAreArray({set("1", 5), set("1", 6)}));
}

// Sanitizers multiply the memory.
#if !defined(VIGIL_STD_MUTEX) && !defined(__SANITIZE_ADDRESS__)
TEST_F(LongQueue, HasABound)
{
    constexpr int identifiers = 5000; // of about 500 metrics
    constexpr int rounds = 20;
    constexpr qint64 maxKilobytes = 64 * 1024;
    const Oid row =
        below("127.3.1.200.4.1.1.4.115.104.111.112.8.100.97.116.97.98.97.115.101.6.109.101.116.114.105");
    const auto memory = [] { return support::residentKilobytes(QCoreApplication::applicationPid()); };
    block();
    const std::optional<qint64> before = memory();
    if (!before)
        GTEST_SKIP() << "the system does not show the memory of a process";
    for (int round = 0; round < rounds; ++round)
        for (unsigned int i = 0; i < identifiers; ++i)
            facade.sendValue(row + i, "the text of round " + std::to_string(round), 0);
    EXPECT_LT(*memory() - *before, maxKilobytes);
}
#endif

class RandomBlocks : public LongQueue, public testing::WithParamInterface<unsigned int>
{
protected:
    int random(int limit) { return static_cast<int>(m_random() % static_cast<unsigned int>(limit)); }

    std::string randomTree() { return "1." + std::to_string(1 + random(5)); }
    std::string randomCell() { return randomTree() + "." + std::to_string(1 + random(20)); }

    void step()
    {
        const int choice = random(1000);
        if (choice < 600)
            publishNumber();
        else if (choice < 800)
            publishText();
        else if (choice < 930)
            withdraw();
        else if (choice < 970)
            withdrawTree();
        else if (choice < 975)
            block();
        else if (choice < 980)
            unblock();
        else if (choice < 985)
            service.stopReading();
        else
            service.resumeReading();
    }

    void publishNumber()
    {
        const std::string oid = randomCell();
        const int value = random(1000000);
        facade.sendValue(below(oid), value, random(2));
        said.write(oid, set(oid, value));
    }

    void publishText()
    {
        const std::string oid = randomCell();
        const std::string text(static_cast<std::size_t>(random(200000)), static_cast<char>('a' + random(26)));
        facade.sendValue(below(oid), text, random(2));
        said.write(oid, set(oid, text));
    }

    void withdraw()
    {
        const std::string oid = randomCell();
        facade.unsetOid(below(oid));
        said.remove(oid);
    }

    void withdrawTree()
    {
        const std::string oid = random(2) == 0 ? randomTree() : randomCell();
        facade.unsetOidTree(below(oid));
        said.remove(oid);
    }

    /// From the cells to their lines; long ones would make a failure unreadable.
    static std::map<std::string, std::size_t> hashesOf(const ShownCells& cells)
    {
        std::map<std::string, std::size_t> hashes;
        for (const auto& [oid, line] : cells.cells())
            hashes[oid] = std::hash<std::string>()(line);
        return hashes;
    }

    ShownCells said;

private:
    std::mt19937 m_random{GetParam()};
};

TEST_P(RandomBlocks, LeaveTheServiceWithWhatTheApplicationSaidLast)
{
    for (int i = 0; i < 3000; ++i)
        step();
    unblock();
    service.resumeReading();
    settle();
    ShownCells shown(service.frames());
    shown.remove("99");
    EXPECT_EQ(hashesOf(shown), hashesOf(said));
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomBlocks, testing::Range(1u, 4u));

} // namespace
