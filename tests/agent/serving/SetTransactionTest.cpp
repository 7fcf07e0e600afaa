// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/netsnmp/NetSnmp.h"
#include "agent/serving/SetTransaction.h"

using agent::SetTransaction;

namespace {

constexpr agent::ApplicationId first = 7;
constexpr agent::ApplicationId second = 8;

class SetTransactionTest : public testing::Test
{
protected:
    bool acceptFirst() { return set.handleAnswer(first, 1, SNMP_ERR_NOERROR); }
    bool acceptSecond() { return set.handleAnswer(second, 2, SNMP_ERR_NOERROR); }
    void acceptBoth()
    {
        acceptFirst();
        acceptSecond();
        set.handleSettled();
    }
    bool refuseSecond() { return set.handleAnswer(second, 2, SNMP_ERR_WRONGVALUE); }

    SetTransaction set{{{{{1}, 11}, first, 1}, {{{2}, 12}, second, 2}}};
};

} // namespace

TEST_F(SetTransactionTest, AsksUntilTheLastOwnerAccepts)
{
    EXPECT_FALSE(acceptFirst());
    EXPECT_EQ(set.state(), SetTransaction::Asking);
    EXPECT_FALSE(set.handleSettled());
    EXPECT_TRUE(acceptSecond());
    EXPECT_EQ(set.state(), SetTransaction::Settling);
    EXPECT_TRUE(set.handleSettled());
    EXPECT_EQ(set.state(), SetTransaction::Accepted);
    EXPECT_EQ(set.decision().errorStatus, SNMP_ERR_NOERROR);
}

TEST_F(SetTransactionTest, TheFirstRefusalDecides)
{
    EXPECT_TRUE(refuseSecond());
    EXPECT_EQ(set.state(), SetTransaction::Refused);
    EXPECT_EQ(set.decision().index, 1);
    EXPECT_EQ(set.decision().errorStatus, SNMP_ERR_WRONGVALUE);
}

TEST_F(SetTransactionTest, ALostOwnerDecidesEvenIfItHasAccepted)
{
    acceptFirst();
    EXPECT_FALSE(set.handleLost(9));
    EXPECT_TRUE(set.handleLost(first));
    EXPECT_EQ(set.state(), SetTransaction::Refused);
    EXPECT_EQ(set.decision().index, 0);
    EXPECT_EQ(set.decision().errorStatus, SNMP_ERR_RESOURCEUNAVAILABLE);
}

TEST_F(SetTransactionTest, ALossRightAfterTheLastAnswerStillDecides)
{
    acceptFirst();
    acceptSecond();
    EXPECT_TRUE(set.handleLost(second));
    EXPECT_EQ(set.state(), SetTransaction::Refused);
    EXPECT_EQ(set.decision().index, 1);
    EXPECT_EQ(set.decision().errorStatus, SNMP_ERR_RESOURCEUNAVAILABLE);
    EXPECT_FALSE(set.handleSettled());
}

TEST_F(SetTransactionTest, ATimeoutDoesNotEndTheSettling)
{
    acceptFirst();
    acceptSecond();
    EXPECT_FALSE(set.handleTimeout());
    EXPECT_EQ(set.state(), SetTransaction::Settling);
    EXPECT_TRUE(set.handleSettled());
    EXPECT_EQ(set.state(), SetTransaction::Accepted);
    EXPECT_EQ(set.decision().errorStatus, SNMP_ERR_NOERROR);
}

TEST_F(SetTransactionTest, ATimeoutDecidesAgainstTheFirstOpenQuestion)
{
    acceptFirst();
    EXPECT_TRUE(set.handleTimeout());
    EXPECT_EQ(set.state(), SetTransaction::Refused);
    EXPECT_EQ(set.decision().index, 1);
    EXPECT_EQ(set.decision().errorStatus, SNMP_ERR_RESOURCEUNAVAILABLE);
}

TEST_F(SetTransactionTest, AwaitsOneAnswerToEachQuestion)
{
    EXPECT_TRUE(set.isAwaiting(first, 1));
    EXPECT_FALSE(set.isAwaiting(second, 1)) << "the number is another owner's";
    EXPECT_FALSE(set.isAwaiting(first, 3));
    acceptFirst();
    EXPECT_FALSE(set.isAwaiting(first, 1));
    EXPECT_TRUE(set.isAwaiting(second, 2));
}

TEST_F(SetTransactionTest, ADecisionStands)
{
    refuseSecond();
    EXPECT_FALSE(set.isAwaiting(first, 1));
    EXPECT_FALSE(set.handleLost(first));
    EXPECT_FALSE(set.handleTimeout());
    EXPECT_EQ(set.decision().index, 1);
    EXPECT_EQ(set.decision().errorStatus, SNMP_ERR_WRONGVALUE);
}

TEST_F(SetTransactionTest, OnlyAnAcceptedSetIsCommittedAndOnlyOnce)
{
    EXPECT_FALSE(set.commit()) << "still asking";
    acceptBoth();
    EXPECT_TRUE(set.commit());
    EXPECT_EQ(set.state(), SetTransaction::Committed);
    EXPECT_FALSE(set.commit());
}

TEST_F(SetTransactionTest, ARefusedSetIsNotCommitted)
{
    refuseSecond();
    EXPECT_FALSE(set.commit());
    EXPECT_EQ(set.state(), SetTransaction::Refused);
}
