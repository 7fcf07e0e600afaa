// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <map>
#include <ostream>
#include <vector>

#include "agent/notifications/NotificationPolicy.h"
#include "support/ManualClock.h"

using agent::HealthChange;
using agent::NotificationPolicy;
using agent::ObjectId;
using testing::ElementsAre;
using testing::IsEmpty;

namespace agent {

bool operator==(const HealthChange& left, const HealthChange& right)
{
    return left.check == right.check && left.status == right.status &&
           left.previousStatus == right.previousStatus && left.summary == right.summary;
}

void PrintTo(const HealthChange& change, std::ostream* out)
{
    *out << "check " << change.check.at(0) << ": " << change.previousStatus << " -> " << change.status
         << " \"" << change.summary << '"';
}

} // namespace agent

namespace {

constexpr int ok = 0;
constexpr int warning = 1;
constexpr int critical = 2;
constexpr int unknown = 3;

const ObjectId disk{1};
const ObjectId memory{2};

class NotificationPolicyTest : public testing::Test
{
protected:
    explicit NotificationPolicyTest(qint64 timersFireEarlyMs = 0) : clock(timersFireEarlyMs) {}

    void writeStatus(int status, const ObjectId& check = disk)
    {
        rows[check].status = status;
        policy.handleStatusWritten(check, status);
    }

    void writeSummary(const std::string& summary, const ObjectId& check = disk)
    {
        rows[check].summary = summary;
        policy.handleSummaryWritten(check, summary);
    }

    void write(int status, const std::string& summary, const ObjectId& check = disk)
    {
        writeStatus(status, check);
        writeSummary(summary, check);
    }

    void create(const ObjectId& check = disk) { write(unknown, "", check); }

    void cover(const std::string& summary, const ObjectId& check = disk)
    {
        rows[check] = {unknown, summary};
        policy.handleCovered(check);
    }

    void remove(const ObjectId& check = disk)
    {
        rows.erase(check);
        policy.handleRemoved(check);
    }

    /// A check evaluated as OK, and not muted.
    void createEvaluated(const ObjectId& check = disk)
    {
        create(check);
        write(ok, "fine", check);
        clock.advance(60'000);
    }

    support::ManualClock clock;
    std::map<ObjectId, NotificationPolicy::Served> rows;
    std::vector<HealthChange> sent;
    agent::Mutes mutes{clock};
    NotificationPolicy policy{clock, mutes,
                              [this](const ObjectId& check) -> std::optional<NotificationPolicy::Served> {
                                  const auto row = rows.find(check);
                                  if (row == rows.end())
                                      return std::nullopt;
                                  return row->second;
                              },
                              [this](const HealthChange& change) { sent.push_back(change); }};
};

class NotificationPolicyWithEarlyTimers : public NotificationPolicyTest
{
protected:
    NotificationPolicyWithEarlyTimers() : NotificationPolicyTest(1) {}
};

} // namespace

// --- The first evaluation

TEST_F(NotificationPolicyTest, CreatingACheckSendsNothing)
{
    create();
    clock.advance(5000);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(NotificationPolicyTest, AFirstEvaluationAsOkOrUnknownSendsNothing)
{
    create(disk);
    write(ok, "fine", disk);
    create(memory);
    write(unknown, "memory is unknown", memory);
    clock.advance(5000);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(NotificationPolicyTest, AFirstEvaluationAsWarningOrCriticalIsSentWithThePreviousStatusUnknown)
{
    create(disk);
    write(warning, "filling up", disk);
    create(memory);
    write(critical, "full", memory);
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, warning, unknown, "filling up"},
                                  HealthChange{memory, critical, unknown, "full"}));
}

TEST_F(NotificationPolicyTest, UnknownWithASummaryIsAnEvaluation)
{
    create();
    write(unknown, "disk is unknown");
    write(ok, "fine");
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, ok, unknown, "fine"}));
}

TEST_F(NotificationPolicyTest, ALossBeforeTheFirstEvaluationSendsNothing)
{
    create();
    cover("No connection");
    clock.advance(5000);
    EXPECT_THAT(sent, IsEmpty());
    write(ok, "fine");
    EXPECT_THAT(sent, IsEmpty()) << "the loss was no evaluation";
}

// --- Later changes

TEST_F(NotificationPolicyTest, EveryLaterChangeIsSentRecoveryIncluded)
{
    createEvaluated();
    write(critical, "full");
    clock.advance(1000);
    write(warning, "filling up");
    clock.advance(1000);
    write(ok, "fine");
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, critical, ok, "full"},
                                  HealthChange{disk, warning, critical, "filling up"},
                                  HealthChange{disk, ok, warning, "fine"}));
}

TEST_F(NotificationPolicyTest, ANewSummaryAloneSendsNothing)
{
    createEvaluated();
    write(ok, "still fine");
    writeSummary("better than ever");
    clock.advance(5000);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(NotificationPolicyTest, ALossIsSentAtOnceWithTheAgentsText)
{
    createEvaluated();
    cover("No connection");
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, unknown, ok, "No connection"}));
}

TEST_F(NotificationPolicyTest, ARecoveryFromALossIsSentWithTheApplicationsText)
{
    createEvaluated();
    cover("No connection");
    clock.advance(1000);
    rows[disk].summary = "fine"; // from before the loss
    writeStatus(ok);
    EXPECT_EQ(sent.size(), 1u) << "the new summary has not come yet";
    writeSummary("fine again");
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[1], (HealthChange{disk, ok, unknown, "fine again"}));
}

TEST_F(NotificationPolicyTest, AReplayWithoutALossSendsNothing)
{
    createEvaluated();
    createEvaluated(memory);
    writeStatus(ok, disk);
    writeStatus(ok, memory);
    writeSummary("fine", disk);
    writeSummary("fine", memory);
    clock.advance(5000);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(NotificationPolicyTest, AReplayToARestartedAgentSendsOnlyChecksInNeedOfAttention)
{
    writeStatus(ok, disk); // a replay sends every status before the first summary
    writeStatus(critical, memory);
    writeSummary("fine", disk);
    writeSummary("full", memory);
    clock.advance(5000);
    EXPECT_THAT(sent, ElementsAre(HealthChange{memory, critical, unknown, "full"}));
}

TEST_F(NotificationPolicyTest, ARowCreatedAgainAfterACrashIsSentAsUnknown)
{
    createEvaluated();
    create(); // within the grace period of the crash
    clock.advance(5000);
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, unknown, ok, ""}));
}

// --- A status and its text

TEST_F(NotificationPolicyTest, AStatusWaitsForItsSummary)
{
    createEvaluated();
    writeStatus(critical);
    clock.advance(199);
    EXPECT_THAT(sent, IsEmpty());
    writeSummary("full");
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, critical, ok, "full"}));
}

TEST_F(NotificationPolicyTest, AStatusWithoutASummaryWaits200Milliseconds)
{
    createEvaluated();
    writeStatus(critical);
    clock.advance(199);
    EXPECT_THAT(sent, IsEmpty());
    clock.advance(1);
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, critical, ok, "fine"}));
}

TEST_F(NotificationPolicyTest, ChangesDuringTheWaitAreSentAsOneOrNone)
{
    createEvaluated();
    writeStatus(warning);
    clock.advance(100);
    writeStatus(critical);
    writeSummary("full");
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, critical, ok, "full"}));

    createEvaluated(memory);
    writeStatus(warning, memory);
    clock.advance(100);
    writeStatus(ok, memory);
    clock.advance(5000);
    EXPECT_EQ(sent.size(), 1u);
}

TEST_F(NotificationPolicyTest, AFurtherChangeDoesNotExtendTheWait)
{
    createEvaluated();
    for (int i = 0; i < 4; ++i) {
        writeStatus(i % 2 == 0 ? warning : critical);
        clock.advance(60);
    }
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, critical, ok, "fine"}));
}

TEST_F(NotificationPolicyTest, ALossEndsTheWait)
{
    createEvaluated();
    writeStatus(critical);
    cover("No connection");
    clock.advance(5000);
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, unknown, ok, "No connection"}));
}

// --- Muted checks

TEST_F(NotificationPolicyTest, AMutedCheckSendsItsNewestStatusAfterTheSecond)
{
    createEvaluated();
    write(warning, "filling up");
    clock.advance(300);
    write(critical, "full");
    clock.advance(300);
    write(ok, "fine again");
    clock.advance(399);
    EXPECT_EQ(sent.size(), 1u);
    clock.advance(1);
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, warning, ok, "filling up"},
                                  HealthChange{disk, ok, warning, "fine again"}));
}

TEST_F(NotificationPolicyTest, AMutedCheckBackAtTheSentStatusSendsNothing)
{
    createEvaluated();
    write(warning, "filling up");
    write(critical, "full");
    write(warning, "filling up again");
    clock.advance(5000);
    EXPECT_EQ(sent.size(), 1u);
}

TEST_F(NotificationPolicyTest, ALossOfAMutedCheckWaitsToo)
{
    createEvaluated();
    write(warning, "filling up");
    cover("No connection");
    EXPECT_EQ(sent.size(), 1u);
    clock.advance(1000);
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[1], (HealthChange{disk, unknown, warning, "No connection"}));
}

TEST_F(NotificationPolicyTest, AStatusAtTheEndOfTheSecondStillWaitsForItsSummary)
{
    createEvaluated();
    write(warning, "filling up");
    write(critical, "full");
    clock.advance(999);
    writeStatus(ok);
    clock.advance(100);
    EXPECT_EQ(sent.size(), 1u);
    writeSummary("fine again");
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[1], (HealthChange{disk, ok, warning, "fine again"}));
}

TEST_F(NotificationPolicyTest, OneCheckDoesNotMuteAnother)
{
    createEvaluated(disk);
    createEvaluated(memory);
    write(warning, "filling up", disk);
    write(critical, "full", memory);
    EXPECT_EQ(sent.size(), 2u);
}

TEST_F(NotificationPolicyTest, ACheckFlappingForTenSecondsIsSentTenTimesAtMost)
{
    createEvaluated();
    for (int i = 1; i < 1000; ++i) {
        write(i % 2 == 0 ? ok : critical, "flapping");
        clock.advance(10);
    }
    EXPECT_LE(sent.size(), 10u);
    EXPECT_GE(sent.size(), 5u);
}

// --- An operator's mute

TEST_F(NotificationPolicyTest, AMuteHidesChangesUntilItsEnd)
{
    createEvaluated();
    EXPECT_FALSE(mutes.mute(disk, 3'600'000));
    write(warning, "filling up");
    clock.advance(60'000);
    write(critical, "full");
    clock.advance(3'600'000 - 60'000 - 1);
    EXPECT_THAT(sent, IsEmpty());
    clock.advance(1);
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, critical, ok, "full"}));
}

TEST_F(NotificationPolicyTest, ACheckCriticalFromItsFirstEvaluationOnIsSentWhenTheMuteEnds)
{
    EXPECT_FALSE(mutes.mute(disk, 60'000));
    create();
    write(critical, "full");
    clock.advance(59'999);
    EXPECT_THAT(sent, IsEmpty());
    clock.advance(1);
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, critical, unknown, "full"}));
}

TEST_F(NotificationPolicyTest, AMuteOfACheckThatIsWellAgainSendsNothing)
{
    createEvaluated();
    EXPECT_FALSE(mutes.mute(disk, 60'000));
    write(critical, "full");
    clock.advance(30'000);
    write(ok, "fine");
    clock.advance(60'000);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(NotificationPolicyTest, AMuteHidesTheAgentsOwnUnknown)
{
    createEvaluated();
    EXPECT_FALSE(mutes.mute(disk, 60'000));
    cover("No connection");
    clock.advance(59'999);
    EXPECT_THAT(sent, IsEmpty());
    EXPECT_TRUE(mutes.unmute(disk));
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, unknown, ok, "No connection"}));
}

TEST_F(NotificationPolicyTest, AMuteLeavesOtherChecksAlone)
{
    createEvaluated(disk);
    createEvaluated(memory);
    EXPECT_FALSE(mutes.mute(disk, 60'000));
    write(critical, "full", disk);
    write(critical, "full", memory);
    EXPECT_THAT(sent, ElementsAre(HealthChange{memory, critical, ok, "full"}));
}

TEST_F(NotificationPolicyTest, ALongerMuteGoesOn)
{
    createEvaluated();
    EXPECT_FALSE(mutes.mute(disk, 60'000));
    write(critical, "full");
    EXPECT_FALSE(mutes.mute(disk, 120'000));
    clock.advance(119'999);
    EXPECT_THAT(sent, IsEmpty());
    clock.advance(1);
    EXPECT_EQ(sent.size(), 1u);
}

TEST_F(NotificationPolicyTest, ARowForgottenWhileMutedIsSentWhenTheMuteEnds)
{
    createEvaluated();
    EXPECT_FALSE(mutes.mute(disk, 60'000));
    cover("No connection");
    policy.handleForgotten(disk);
    remove();
    EXPECT_THAT(sent, IsEmpty());
    EXPECT_EQ(policy.notified().at(disk), ok) << "a restart does not change what managers know";
    clock.advance(60'000);
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, unknown, ok,
                                               "No connection The agent has forgotten the check."}));
    EXPECT_EQ(policy.size(), 0u);
}

// Managers went on to see the check as CRITICAL.
TEST_F(NotificationPolicyTest, ARowForgottenWhileMutedIsSentAfterARestart)
{
    const std::string summary = "No connection The agent has forgotten the check.";
    EXPECT_FALSE(mutes.mute(disk, 60'000));
    policy.restore({{disk, critical}, {memory, ok}}, -1);
    policy.restoreForgotten({{disk, unknown, summary}, {memory, unknown, summary}, {{99}, unknown, "x"}});
    EXPECT_THAT(sent, ElementsAre(HealthChange{memory, unknown, ok, summary})) << "it is not muted";
    sent.clear();
    ASSERT_EQ(policy.forgotten().size(), 1u);
    EXPECT_EQ(policy.forgotten()[0].summary, summary);
    EXPECT_EQ(policy.notified().at(disk), critical);
    clock.advance(60'000);
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, unknown, critical, summary}));
    EXPECT_EQ(policy.size(), 0u);
}

TEST_F(NotificationPolicyTest, ARowForgottenWhileMutedGoesOnFromTheStatusManagersKnow)
{
    createEvaluated();
    write(critical, "full");
    clock.advance(5'000);
    sent.clear();
    EXPECT_FALSE(mutes.mute(disk, 60'000));
    cover("No connection");
    policy.handleForgotten(disk);
    remove();
    createEvaluated();
    clock.advance(60'000);
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, ok, critical, "fine"}));
}

// --- Early timers

TEST_F(NotificationPolicyWithEarlyTimers, AStatusWithoutASummaryIsSent)
{
    createEvaluated();
    writeStatus(critical);
    clock.advance(199);
    EXPECT_THAT(sent, IsEmpty());
    clock.advance(1);
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, critical, ok, "fine"}));
}

TEST_F(NotificationPolicyWithEarlyTimers, AMutedCheckSendsItsNewestStatusAfterTheSecond)
{
    createEvaluated();
    write(warning, "filling up");
    write(critical, "full");
    clock.advance(1000);
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, warning, ok, "filling up"},
                                  HealthChange{disk, critical, warning, "full"}));
}

// --- Removed rows

TEST_F(NotificationPolicyTest, RemovingARowSendsNothing)
{
    createEvaluated();
    remove();
    clock.advance(5000);
    EXPECT_THAT(sent, IsEmpty());
    EXPECT_EQ(policy.size(), 0u);
}

TEST_F(NotificationPolicyTest, RemovingARowDropsItsPendingChange)
{
    createEvaluated(disk);
    writeStatus(critical, disk);
    remove(disk);
    createEvaluated(memory);
    write(warning, "filling up", memory);
    write(critical, "full", memory);
    remove(memory);
    clock.advance(5000);
    EXPECT_THAT(sent, ElementsAre(HealthChange{memory, warning, ok, "filling up"}));
    EXPECT_EQ(policy.size(), 0u);
}

TEST_F(NotificationPolicyTest, ARowCreatedAgainStartsUnevaluated)
{
    createEvaluated();
    write(critical, "full");
    clock.advance(5000);
    remove();
    create();
    write(ok, "fine");
    clock.advance(5000);
    EXPECT_EQ(sent.size(), 1u);
    remove();
    create();
    write(critical, "full again");
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[1], (HealthChange{disk, critical, unknown, "full again"}));
}

TEST_F(NotificationPolicyTest, ARowCreatedAgainStaysMutedForTheRestOfTheSecond)
{
    for (int i = 0; i < 300; ++i) {
        create();
        write(critical, "full");
        remove();
        clock.advance(10);
    }
    EXPECT_EQ(sent.size(), 3u);
    clock.advance(1000);
    EXPECT_EQ(policy.size(), 0u);
}

TEST_F(NotificationPolicyTest, ASummaryWithoutAStatusTakesNoMemory)
{
    writeSummary("full");
    EXPECT_EQ(policy.size(), 0u);
}

TEST_F(NotificationPolicyTest, ForgettingALostCheckIsSent)
{
    createEvaluated();
    cover("No connection.");
    sent.clear();
    policy.handleForgotten(disk);
    remove();
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, unknown, unknown,
                                               "No connection. The agent has forgotten the check.", true}));
}

TEST_F(NotificationPolicyTest, ForgettingACheckThatManagersNeverHeardOfSendsNothing)
{
    create();
    policy.handleForgotten(disk);
    EXPECT_THAT(sent, IsEmpty());
}

// --- After a restart of the agent

TEST_F(NotificationPolicyTest, AReplayOfAKnownStatusSendsNothing)
{
    policy.restore({{disk, critical}}, -1);
    write(critical, "disk is full");
    clock.advance(5000);
    EXPECT_THAT(sent, IsEmpty());
}

TEST_F(NotificationPolicyTest, ARecoveryDuringTheRestartIsSent)
{
    policy.restore({{disk, critical}}, -1);
    write(ok, "fine");
    EXPECT_THAT(sent, ElementsAre(HealthChange{disk, ok, critical, "fine"}));
}

TEST_F(NotificationPolicyTest, ALossThatManagersKnowIsNotSentAgainButANewOneIs)
{
    policy.restore({{disk, unknown}, {memory, ok}}, -1);
    cover("No connection", disk);
    EXPECT_THAT(sent, IsEmpty());
    cover("No connection", memory);
    EXPECT_THAT(sent, ElementsAre(HealthChange{memory, unknown, ok, "No connection"}));
}

TEST_F(NotificationPolicyTest, ChecksThatDoNotComeBackAreForgotten)
{
    policy.restore({{disk, critical}}, 60'000);
    clock.advance(59'999);
    EXPECT_EQ(policy.notified().size(), 1u);
    clock.advance(1);
    EXPECT_EQ(policy.notified().size(), 0u);
}
