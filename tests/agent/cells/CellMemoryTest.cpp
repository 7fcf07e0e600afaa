// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>

#include <malloc.h>

#include "agent/cells/ServedCells.h"
#include "agent/cells/UpdateWatch.h"
#include "agent/checks/CheckList.h"
#include "agent/notifications/NotificationPolicy.h"
#include "support/Load.h"
#include "support/ManualClock.h"

using agent::ApplicationId;
using agent::CellStore;
using agent::CellValue;
using agent::ObjectId;
using agent::healthTable::cellOf;
using agent::healthTable::Column;

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr bool isHeapMeasured = false; // the sanitizer has an allocator of its own
#else
constexpr bool isHeapMeasured = true;
#endif

size_t heap()
{
    return mallinfo2().uordblks;
}

/// The parts of the agent that keep something for a cell.
class KeepersOfCells
{
public:
    explicit KeepersOfCells(support::ManualClock& clock)
        : cells(store, clock, settings()),
          mutes(clock),
          policy(
              clock, mutes, [this](const ObjectId& check) { return served(check); },
              [](const agent::HealthChange&) {})
    {
        using agent::NotificationPolicy;
        using agent::ServedCells;
        QObject::connect(&cells, &ServedCells::statusWritten, &policy,
                         &NotificationPolicy::handleStatusWritten);
        QObject::connect(&cells, &ServedCells::summaryWritten, &policy,
                         &NotificationPolicy::handleSummaryWritten);
        QObject::connect(&cells, &ServedCells::checkCovered, &policy, &NotificationPolicy::handleCovered);
        QObject::connect(&cells, &ServedCells::checkRemoved, &policy, &NotificationPolicy::handleRemoved);
    }

    CellStore store;
    agent::ServedCells cells;
    agent::Mutes mutes;
    agent::NotificationPolicy policy;

private:
    static agent::ServedCells::Settings settings()
    {
        agent::ServedCells::Settings settings;
        settings.lost = {10'000, 60'000, 20, 10'000};
        settings.staleAfterMs = agent::UpdateWatch::learned;
        return settings;
    }

    std::optional<agent::NotificationPolicy::Served> served(const ObjectId& check) const
    {
        const agent::Cell* status = store.find(cellOf(Column::Status, check));
        const int* number = status ? std::get_if<int>(&status->served()) : nullptr;
        return number ? std::optional<agent::NotificationPolicy::Served>({*number, std::string()})
                      : std::nullopt;
    }
};

/// Random applications. They publish, withdraw, take over, crash and end.
class CellMemory : public testing::Test
{
protected:
    static constexpr size_t applications = 5;

    CellMemory()
    {
        for (size_t i = 0; i < applications; ++i)
            running.push_back(++last);
    }

    size_t random(size_t below) { return std::uniform_int_distribution<size_t>(0, below - 1)(generator); }

    /// Statuses, summaries, results and free objects, of checks that rarely come twice.
    ObjectId randomId()
    {
        const ObjectId check{3, 97, 112, 112, 2, 104, static_cast<unsigned int>(random(100'000))};
        switch (random(4)) {
        case 0:
            return cellOf(Column::Status, check);
        case 1:
            return cellOf(Column::Summary, check);
        case 2:
            return agent::below(agent::vigilMibRoot(),
                                {3, 1, 3, 3, 97, 112, 112, 2, 104, check.back(), 1, 109});
        default:
            return agent::below(agent::enterpriseRoot(), {5, check.back()});
        }
    }

    CellValue randomValue()
    {
        return random(2) == 0 ? CellValue(static_cast<int>(random(4)))
                              : CellValue(std::string(random(90), 'x'));
    }

    void takeStep()
    {
        ApplicationId& application = running[random(applications)];
        const size_t action = random(1'000);
        if (action < 450)
            publish(application, random(2) == 0 && !model.empty() ? someId() : randomId(), randomValue());
        else if (action < 995)
            withdraw(application, model.empty() ? randomId() : someId());
        else if (action < 998)
            withdraw(application, agent::enterpriseRoot());
        else
            lose(application);
        clock.advance(static_cast<qint64>(random(300)));
    }

    ObjectId someId()
    {
        const auto next = model.lower_bound(randomId());
        return (next == model.end() ? model.begin() : next)->first;
    }

    void publish(ApplicationId application, const ObjectId& id, const CellValue& value)
    {
        parts.cells.publish(application, id, value);
        model[id] = application;
    }

    void withdraw(ApplicationId application, const ObjectId& tree)
    {
        parts.cells.unset(application, tree);
        for (auto it = model.lower_bound(tree); it != model.end() && agent::isInTree(tree, it->first);)
            it = it->second == application ? model.erase(it) : std::next(it);
    }

    void lose(ApplicationId& application)
    {
        parts.cells.lose({application, {}, QString()});
        application = ++last;
    }

    /// Cells of lost applications go in their own time.
    void expectModel()
    {
        size_t memory = 0;
        for (const auto& [id, cell] : std::map<ObjectId, ApplicationId>(model)) {
            const bool isRunning = std::count(running.begin(), running.end(), cell) > 0;
            const agent::Cell* found = parts.store.find(id);
            if (!found && !isRunning)
                model.erase(id);
            else
                ASSERT_TRUE(found && found->owner == cell);
        }
        EXPECT_EQ(parts.store.size(), model.size());
        for (ApplicationId application = 1; application <= last; ++application)
            memory += parts.store.memoryOf(application);
        EXPECT_EQ(parts.store.memory(), memory);
    }

    /// All applications end, and every delay is over.
    void endAll()
    {
        for (const ApplicationId application : running)
            withdraw(application, agent::enterpriseRoot());
        clock.advance(200'000);
        model.clear();
    }

    std::mt19937 generator{43125};
    std::map<ObjectId, ApplicationId> model;
    std::vector<ApplicationId> running;
    ApplicationId last = 0;
    support::ManualClock clock;
    KeepersOfCells parts{clock};
};

} // namespace

TEST_F(CellMemory, RandomPublicationsWithdrawalsAndLossesLeaveNothing)
{
    const size_t rounds = support::isFullLoad() ? 100 : 4;
    size_t first = 0;
    for (size_t round = 0; round < rounds; ++round) {
        for (int step = 0; step < 10'000; ++step)
            takeStep();
        expectModel();
        endAll();
        EXPECT_EQ(parts.store.size(), 0U);
        EXPECT_EQ(parts.store.memory(), 0U);
        EXPECT_EQ(parts.policy.size(), 0U);
        first = round == 0 ? heap() : first;
        EXPECT_TRUE(!isHeapMeasured || heap() < first + 20'000) << heap() << " after round " << round;
    }
}

TEST_F(CellMemory, TheEstimateCoversWhatACellTakes)
{
    agent::CheckList list(parts.cells, parts.mutes, clock);
    const auto publishMany = [this](const std::function<ObjectId(unsigned int)>& id, const CellValue& value) {
        constexpr unsigned int count = 1'000;
        const size_t heapBefore = heap();
        const size_t before = parts.store.memory();
        for (int update = 0; update < 12; ++update) { // enough for a rhythm
            for (unsigned int i = 0; i < count; ++i)
                parts.cells.publish(1, id(i), value);
            clock.advance(10'000);
        }
        const size_t estimate = (parts.store.memory() - before) / count;
        const size_t taken = (heap() - heapBefore) / count;
        EXPECT_EQ(parts.store.memory() % count, 0U);
        if (!isHeapMeasured)
            return;
        EXPECT_LE(taken, estimate);
        EXPECT_GE(2 * taken, estimate);
    };
    const auto check = [](unsigned int i) { return ObjectId{3, 97, 112, 112, 4, 104, 99, i / 200, i % 200}; };
    publishMany([&](unsigned int i) { return cellOf(Column::Status, check(i)); }, 2);
    publishMany([&](unsigned int i) { return cellOf(Column::Summary, check(i)); }, std::string(100, 'x'));
    const auto metric = [](unsigned int i) {
        return ObjectId{3, 97, 112, 112, 4, 104, 99, i / 200, i % 200, 1, 109};
    };
    publishMany([&](unsigned int i) { return agent::resultTable().cellOf(Column::Status, metric(i)); }, 2);
    const auto withLongKey = [](ObjectId index, unsigned int i) {
        ObjectId key(100, i);
        key.front() = 99;
        index.insert(index.end(), key.begin(), key.end());
        return index;
    };
    publishMany([&](unsigned int i) { return cellOf(Column::Status, withLongKey({1, 97}, i)); }, 2);
    publishMany(
        [&](unsigned int i) {
            return agent::resultTable().cellOf(Column::Status, withLongKey({1, 97, 1, 98}, i));
        },
        2);
    publishMany([](unsigned int i) { return agent::below(agent::enterpriseRoot(), {5, i}); }, 5);
    publishMany(
        [](unsigned int i) {
            return agent::below(agent::enterpriseRoot(), {6, i});
        },
        std::string(2'000, 'x'));
}

TEST_F(CellMemory, AUsualCellTakesAtMost150BytesBesideItsIdentifierAndText)
{
    constexpr unsigned int count = 10'000;
    const std::string text = "12345.6";
    const auto id = [](unsigned int i) {
        ObjectId arcs = agent::below(agent::vigilMibRoot(), {3, 1, 5});
        arcs.resize(28, 97);
        arcs.push_back(i * 7919 % count); // in no order
        arcs.push_back(0);
        return arcs;
    };
    const size_t before = heap();
    for (unsigned int i = 0; i < count; ++i)
        parts.cells.publish(1, id(i), text);
    const size_t taken = (heap() - before) / count;
    EXPECT_TRUE(!isHeapMeasured || taken <= id(0).size() * sizeof(unsigned int) + text.size() + 150) << taken;
}
