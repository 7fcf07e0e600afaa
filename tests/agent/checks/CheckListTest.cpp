// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "agent/checks/CheckList.h"
#include "support/ManualClock.h"

using agent::ApplicationId;
using agent::Check;
using agent::CheckList;
using agent::Metric;
using agent::ObjectId;
using agent::healthTable::cellOf;
using agent::healthTable::Column;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

namespace status = agent::status;

ObjectId indexOfTexts(const std::vector<std::string>& texts)
{
    ObjectId index;
    for (const std::string& text : texts) {
        index.push_back(static_cast<unsigned int>(text.size()));
        for (const char octet : text)
            index.push_back(static_cast<unsigned int>(static_cast<signed char>(octet))); // as the library
    }
    return index;
}

ObjectId cellInTable(unsigned int table, unsigned int column, const ObjectId& row)
{
    ObjectId cell = agent::below(agent::vigilMibRoot(), {table, 1, column});
    cell.insert(cell.end(), row.begin(), row.end());
    return cell;
}

class CheckListTest : public testing::Test
{
protected:
    static constexpr qint64 graceMs = 10'000;
    static constexpr qint64 staleMs = 60'000;
    static constexpr qint64 forgetMs = 3'600'000;

    inline static const ObjectId disk = indexOfTexts({"app", "disk"});
    inline static const ObjectId queue = indexOfTexts({"app", "queue"});

    CheckListTest()
    {
        QObject::connect(&list, &CheckList::changed, &list,
                         [this](unsigned int number) { heard.push_back(std::to_string(number)); });
        QObject::connect(&list, &CheckList::removed, &list,
                         [this](unsigned int number) { heard.push_back("-" + std::to_string(number)); });
    }

    void publish(const ObjectId& check, int status, const std::string& summary = "text",
                 ApplicationId application = 1)
    {
        cells.publish(application, cellOf(Column::Status, check), status);
        cells.publish(application, cellOf(Column::Summary, check), summary);
    }

    void publishMetric(const ObjectId& metric, int status, const std::string& value)
    {
        cells.publish(1, cellInTable(2, 2, metric), std::string(" old"));
        cells.publish(1, cellInTable(2, 3, metric), std::string("1"));
        cells.publish(1, cellInTable(2, 4, metric), std::string("2"));
        cells.publish(1, cellInTable(3, 1, metric), status);
        cells.publish(1, cellInTable(3, 2, metric), std::string("summary"));
        if (value.empty())
            return;
        cells.publish(1, cellInTable(4, 2, metric), value);
        cells.publish(1, cellInTable(4, 3, metric), std::string(" MB"));
        cells.publish(1, cellInTable(4, 4, metric), std::string("~:80"));
        cells.publish(1, cellInTable(4, 5, metric), std::string("@10:20"));
    }

    void withdraw(const ObjectId& check)
    {
        for (const unsigned int table : {1U, 2U, 3U, 4U})
            for (const unsigned int column : {1U, 2U, 3U, 4U, 5U})
                cells.unset(1, cellInTable(table, column, check));
    }

    Check check(unsigned int number) const
    {
        const std::optional<Check> found = list.find(number);
        EXPECT_TRUE(found) << number;
        return found.value_or(Check());
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> names;
        for (auto check = list.next(0); check; check = list.next(check->number))
            names.push_back(std::to_string(check->number) + " " + check->name);
        return names;
    }

    std::vector<std::string> metricNames() const
    {
        std::vector<std::string> names;
        for (auto metric = list.nextMetric({0, 0}); metric;
             metric = list.nextMetric({metric->check, metric->number}))
            names.push_back(std::to_string(metric->check) + "." + std::to_string(metric->number) + " " +
                            metric->fullName);
        return names;
    }

    agent::CellStore store;
    support::ManualClock clock;
    agent::ServedCells cells{store, clock, {{graceMs, forgetMs, 3, 1000}, staleMs}};
    agent::Mutes mutes{clock};
    CheckList list{cells, mutes, clock};
    std::vector<std::string> heard;
};

} // namespace

TEST_F(CheckListTest, ShowsHowLongACheckIsMuted)
{
    publish(disk, status::warning, "disk is full.");
    EXPECT_TRUE(check(1).mutedUntil.isNull());
    const quint64 before = list.revision();
    EXPECT_FALSE(mutes.mute(disk, 60'000));
    EXPECT_GT(list.revision(), before);
    clock.advance(20'000);
    EXPECT_EQ(check(1).mutedUntil, clock.nowUtc().addSecs(40));
    EXPECT_EQ(check(1).mutedMs, 40'000);
    EXPECT_TRUE(mutes.unmute(disk));
    EXPECT_TRUE(check(1).mutedUntil.isNull());
    EXPECT_EQ(check(1).mutedMs, 0);
}

TEST_F(CheckListTest, ShowsACheck)
{
    const QDateTime start = clock.nowUtc();
    publish(disk, status::warning, "disk is full.");
    clock.advance(5'000);
    publish(disk, status::warning, "disk is fuller.");
    clock.advance(1'500);
    const Check found = check(1);
    EXPECT_EQ(found.id, disk);
    EXPECT_EQ(found.firstKey, "app");
    EXPECT_EQ(found.secondKey, "disk");
    EXPECT_EQ(found.name, "app/disk");
    EXPECT_EQ(found.application, 1U);
    EXPECT_EQ(found.status, status::warning);
    EXPECT_EQ(found.severity(), 2);
    EXPECT_EQ(found.summary, "disk is fuller.");
    EXPECT_EQ(found.since, start);
    EXPECT_EQ(found.lastUpdate, start.addMSecs(5'000));
    EXPECT_EQ(found.ageMs, 1'500);
    EXPECT_EQ(found.updates, 2U);
}

TEST_F(CheckListTest, WithoutChecksTheWorstStatusIsUnknown)
{
    EXPECT_EQ(list.worstStatus(), status::unknown);
    EXPECT_EQ(list.worstSeverity(), 1);
    EXPECT_EQ(list.size(), 0U);
    EXPECT_TRUE(list.lastChange().isNull());
    EXPECT_FALSE(list.next(0));
}

TEST_F(CheckListTest, CountsStatuses)
{
    const std::vector<int> statuses = {status::ok, status::unknown, status::warning, status::critical};
    unsigned int number = 0;
    for (const int each : statuses) {
        publish(indexOfTexts({"app", std::to_string(++number)}), each);
        EXPECT_EQ(list.worstStatus(), each);
        EXPECT_EQ(list.worstSeverity(), static_cast<int>(number) - 1);
        EXPECT_EQ(list.count(each), 1U);
        EXPECT_EQ(list.size(), number);
    }
    publish(indexOfTexts({"app", "4"}), status::ok);
    EXPECT_EQ(list.count(status::ok), 2U);
    EXPECT_EQ(list.count(status::critical), 0U);
    EXPECT_EQ(list.worstStatus(), status::warning);
}

TEST_F(CheckListTest, SinceAndTheLastChangeFollowTheStatusAlone)
{
    publish(disk, status::ok);
    clock.advance(1'000);
    publish(disk, status::critical);
    const QDateTime changed = clock.nowUtc();
    clock.advance(1'000);
    publish(disk, status::critical, "another text");
    EXPECT_EQ(check(1).since, changed);
    EXPECT_EQ(list.lastChange(), changed);
}

TEST_F(CheckListTest, ShowsWhatManagersReadOfAStaleCheck)
{
    publish(disk, status::ok);
    clock.advance(staleMs);
    EXPECT_EQ(check(1).status, status::unknown);
    EXPECT_EQ(check(1).summary, "No update since 2026-01-31 12:34:56 UTC.");
    EXPECT_EQ(check(1).since, clock.nowUtc());
    EXPECT_EQ(check(1).ageMs, staleMs);
    EXPECT_EQ(list.count(status::unknown), 1U);
    publish(disk, status::ok);
    EXPECT_EQ(list.count(status::unknown), 0U);
    EXPECT_EQ(list.count(status::ok), 1U);
}

TEST_F(CheckListTest, FollowsALostApplicationToItsEnd)
{
    publish(disk, status::ok);
    cells.lose({1, {}, QString()});
    EXPECT_EQ(check(1).status, status::ok);
    clock.advance(graceMs);
    EXPECT_EQ(check(1).status, status::unknown);
    EXPECT_EQ(check(1).application, 1U);
    clock.advance(forgetMs);
    EXPECT_THAT(names(), IsEmpty());
    EXPECT_EQ(list.count(status::unknown), 0U);
}

TEST_F(CheckListTest, ShowsChecksOfTheLastRun)
{
    const std::vector<agent::LostCheck> saved = {{disk, status::warning, "disk is full."}};
    cells.restore({7, {}, QString()}, clock.nowUtc(), saved);
    EXPECT_EQ(check(1).status, status::warning);
    EXPECT_EQ(check(1).ageMs, -1);
    EXPECT_TRUE(check(1).lastUpdate.isNull());
    cells.restore({8, {}, QString()}, clock.nowUtc().addMSecs(-graceMs), {{queue, status::ok, ""}});
    EXPECT_EQ(check(2).status, status::unknown);
    EXPECT_EQ(list.count(status::warning), 1U);
}

TEST_F(CheckListTest, TheLastWriterOfACheckIsItsApplication)
{
    publish(disk, status::ok, "mine", 1);
    publish(disk, status::warning, "his", 2);
    EXPECT_THAT(names(), ElementsAre("1 app/disk"));
    EXPECT_EQ(check(1).application, 2U);
    EXPECT_EQ(check(1).summary, "his");
    cells.unset(1, agent::enterpriseRoot());
    EXPECT_EQ(list.size(), 1U);
    cells.unset(2, agent::enterpriseRoot());
    EXPECT_EQ(list.size(), 0U);
}

TEST_F(CheckListTest, ACheckKeepsItsNumber)
{
    publish(disk, status::ok);
    publish(queue, status::ok);
    withdraw(disk);
    EXPECT_THAT(names(), ElementsAre("2 app/queue"));
    EXPECT_FALSE(list.find(1));
    publish(indexOfTexts({"app", "third"}), status::ok);
    publish(disk, status::ok);
    EXPECT_THAT(names(), ElementsAre("1 app/disk", "2 app/queue", "3 app/third"));
    EXPECT_EQ(check(1).updates, 1U);
}

TEST_F(CheckListTest, ReportsChanges)
{
    const quint64 before = list.revision();
    publish(disk, status::ok); // status, then summary
    publish(queue, status::ok);
    EXPECT_THAT(heard, ElementsAre("1", "1", "2", "2"));
    EXPECT_EQ(list.revision(), before + 4);
    heard.clear();
    clock.advance(staleMs);
    EXPECT_THAT(heard, testing::UnorderedElementsAre("1", "2"));
    heard.clear();
    withdraw(queue);
    EXPECT_THAT(heard, ElementsAre("-2"));
    EXPECT_EQ(list.revision(), before + 7);
}

TEST_F(CheckListTest, ReportsASummaryThatDoesNotFollowItsStatus)
{
    publish(disk, status::ok);
    publish(queue, status::ok);
    heard.clear();
    cells.publish(1, cellOf(Column::Summary, disk), std::string("another text"));
    EXPECT_THAT(heard, ElementsAre("1"));
    withdraw(queue);
    heard.clear();
    cells.publish(1, cellOf(Column::Summary, queue), std::string("without a status"));
    EXPECT_THAT(heard, IsEmpty());
}

TEST_F(CheckListTest, ShowsTheMetricsOfACheck)
{
    publish(disk, status::ok);
    publishMetric(indexOfTexts({"app", "disk", "used"}), status::warning, "72.5");
    const std::vector<Metric> metrics = list.metricsOf(1);
    ASSERT_EQ(metrics.size(), 1U);
    const Metric& used = metrics.front();
    EXPECT_EQ(used.check, 1U);
    EXPECT_EQ(used.number, 1U);
    EXPECT_EQ(used.name, "used");
    EXPECT_EQ(used.fullName, "app/disk/used");
    EXPECT_EQ(used.status, status::warning);
    EXPECT_EQ(used.summary, "summary");
    EXPECT_EQ(used.value, "72.5");
    EXPECT_EQ(used.unit, "MB");
    EXPECT_EQ(used.warningRange, "~:80");
    EXPECT_EQ(used.criticalRange, "@10:20");
}

TEST_F(CheckListTest, AMetricWithoutANumberHasItsPresentRanges)
{
    publishMetric(indexOfTexts({"app", "disk", "used"}), status::ok, "");
    const std::optional<Metric> metric = list.findMetric({1, 1});
    ASSERT_TRUE(metric);
    EXPECT_EQ(metric->value, "");
    EXPECT_EQ(metric->unit, "old");
    EXPECT_EQ(metric->warningRange, "1");
    EXPECT_EQ(metric->criticalRange, "2");
}

TEST_F(CheckListTest, ListsMetricsInTheOrderOfTheirChecks)
{
    publish(disk, status::ok);
    publish(queue, status::ok);
    publishMetric(indexOfTexts({"app", "queue", "length"}), status::ok, "1");
    publishMetric(indexOfTexts({"app", "disk", "used"}), status::ok, "1");
    publishMetric(indexOfTexts({"app", "queue", "age"}), status::ok, "1");
    EXPECT_THAT(metricNames(), ElementsAre("1.2 app/disk/used", "2.1 app/queue/length", "2.3 app/queue/age"));
    EXPECT_EQ(list.metricCount(), 3U);
    EXPECT_EQ(list.metricsOf(2).size(), 2U);
}

TEST_F(CheckListTest, MetricsKeepTheirNumbersWhenTheirApplicationRestarts)
{
    publish(disk, status::ok);
    publishMetric(indexOfTexts({"app", "disk", "used"}), status::ok, "1");
    publishMetric(indexOfTexts({"app", "disk", "free"}), status::ok, "1");
    cells.unset(1, agent::enterpriseRoot());
    EXPECT_THAT(metricNames(), IsEmpty());
    publish(queue, status::ok);
    publish(disk, status::ok);
    publishMetric(indexOfTexts({"app", "disk", "free"}), status::ok, "1");
    publishMetric(indexOfTexts({"app", "disk", "used"}), status::ok, "1");
    EXPECT_THAT(metricNames(), ElementsAre("1.1 app/disk/used", "1.2 app/disk/free"));
}

TEST_F(CheckListTest, AMetricWithoutItsCheckIsListedUnderTheCheckNumber)
{
    publishMetric(indexOfTexts({"app", "disk", "used"}), status::ok, "1");
    publish(queue, status::ok);
    EXPECT_THAT(metricNames(), ElementsAre("1.1 app/disk/used"));
    EXPECT_THAT(names(), ElementsAre("2 app/queue"));
    publish(disk, status::ok);
    EXPECT_THAT(names(), ElementsAre("1 app/disk", "2 app/queue"));
    EXPECT_EQ(list.size(), 2U);
}

TEST_F(CheckListTest, NamesAreReadable)
{
    publish(indexOfTexts({"Öl ", "\xff\n"}), status::ok, "a\nb\xc3");
    EXPECT_EQ(check(1).firstKey, "Öl ");
    EXPECT_EQ(check(1).secondKey, "\uFFFD\uFFFD");
    EXPECT_EQ(check(1).name, "Öl /\uFFFD\uFFFD");
    EXPECT_EQ(check(1).summary, "a\uFFFDb\uFFFD");
    publish(indexOfTexts({"", ""}), status::ok);
    EXPECT_EQ(check(2).name, "/");
}

TEST_F(CheckListTest, NamesFitIntoAnAdminString)
{
    publish(indexOfTexts({std::string(55, '\x80'), std::string(55, '\x80')}), status::ok);
    EXPECT_EQ(check(1).firstKey.size(), 165U);
    EXPECT_EQ(check(1).name.size(), 253U);
}

TEST_F(CheckListTest, AShortIndexIsReadToItsEnd)
{
    publish({5, 97}, status::ok);
    publish({1, 97, 2}, status::ok);
    EXPECT_EQ(check(1).name, "a");
    EXPECT_EQ(check(2).name, "a/");
}
