// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <QStringList>

#include "agent/netsnmp/MasterLink.h"
#include "support/ManualClock.h"

using agent::MasterLink;
using agent::MasterSession;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

const agent::ObjectId subtree{1, 3, 6, 1, 4, 1, 32473, 5};
const long duplicateError = 263;

/// An snmpd under the test's control: it records requests, and replies when the test says so.
class FakeSession : public MasterSession
{
public:
    bool open() override
    {
        requests.push_back("open");
        return isReachable;
    }

    bool registerTree(const agent::ObjectId& tree) override
    {
        requests.push_back("register " + agent::toText(tree).toStdString());
        return canSend;
    }

    bool ping() override
    {
        requests.push_back("ping");
        if (closesOnSend)
            emit closed();
        return canSend;
    }

    void hangUp() override { requests.push_back("hang up"); }

    bool isReachable = true;
    bool canSend = true;
    bool closesOnSend = false;
    std::vector<std::string> requests;
};

const std::string registerSubtree = "register 1.3.6.1.4.1.32473.5";
const std::string registerOwnObjects = "register 1.3.6.1.4.1.32473.127.3.1.200.5";

class MasterLinkTest : public testing::Test
{
protected:
    MasterLinkTest()
    {
        QObject::connect(&link, &MasterLink::statusChanged, [this] { states.append(link.statusText()); });
        testing::internal::CaptureStderr();
    }

    ~MasterLinkTest() override { testing::internal::GetCapturedStderr(); }

    /// The log since the last call.
    std::string log()
    {
        std::string text = testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
        return text;
    }

    void start()
    {
        link.start();
        clock.advance(0);
    }

    void startServing()
    {
        start();
        emit session.answered(MasterSession::noError);
        emit session.answered(MasterSession::noError);
        session.requests.clear();
        log();
    }

    bool isServing() const { return link.statusText().startsWith(QStringLiteral("serving")); }
    bool isWaiting() const { return link.statusText().startsWith(QStringLiteral("waiting")); }

    support::ManualClock clock;
    FakeSession session;
    MasterLink link{session, clock, QStringLiteral("/a/master"), subtree};
    QStringList states;
};

} // namespace

TEST_F(MasterLinkTest, RegistersTheSubtreeAndThenTheAgentsOwnObjects)
{
    start();
    EXPECT_THAT(session.requests, ElementsAre("open", registerSubtree));
    emit session.answered(MasterSession::noError);
    EXPECT_THAT(session.requests, ElementsAre("open", registerSubtree, registerOwnObjects));
    emit session.answered(MasterSession::noError);
    EXPECT_TRUE(isServing());
    EXPECT_THAT(log(), HasSubstr("serving 1.3.6.1.4.1.32473.5 through snmpd at /a/master"));
}

TEST_F(MasterLinkTest, ASubtreeWithTheAgentsOwnObjectsIsRegisteredOnce)
{
    MasterLink whole(session, clock, QStringLiteral("/a/master"), agent::enterpriseRoot());
    whole.start();
    clock.advance(0);
    emit session.answered(MasterSession::noError);
    EXPECT_THAT(session.requests, ElementsAre("open", "register 1.3.6.1.4.1.32473"));
    EXPECT_EQ(whole.statusText(), QStringLiteral("serving 1.3.6.1.4.1.32473 through snmpd at /a/master"));
}

TEST_F(MasterLinkTest, ReportsEachChangeOfStateOnce)
{
    start();
    emit session.answered(MasterSession::noError);
    emit session.answered(MasterSession::noError);
    clock.advance(1000);
    emit session.answered(MasterSession::noError);
    emit session.closed();
    EXPECT_EQ(
        states,
        (QStringList{QStringLiteral("registering 1.3.6.1.4.1.32473.5 with snmpd at /a/master"),
                     QStringLiteral("registering 1.3.6.1.4.1.32473.127.3.1.200.5 with snmpd at /a/master"),
                     QStringLiteral("serving 1.3.6.1.4.1.32473.5 through snmpd at /a/master"),
                     QStringLiteral("waiting for snmpd at /a/master")}));
}

TEST_F(MasterLinkTest, JoinsEverySecondAndWarnsOnce)
{
    session.isReachable = false;
    start();
    EXPECT_THAT(log(), HasSubstr("cannot join snmpd at /a/master"));
    clock.advance(999);
    EXPECT_THAT(session.requests, ElementsAre("open"));
    clock.advance(1001);
    EXPECT_THAT(session.requests, ElementsAre("open", "open", "open"));
    EXPECT_EQ(log(), "");
}

TEST_F(MasterLinkTest, RepeatsARefusedRegistrationAndWarnsOnce)
{
    start();
    emit session.answered(duplicateError);
    EXPECT_THAT(log(), HasSubstr("refuses to register 1.3.6.1.4.1.32473.5 (AgentX error 263)"));
    clock.advance(1000);
    emit session.answered(duplicateError);
    EXPECT_EQ(log(), "");
    clock.advance(1000);
    EXPECT_THAT(session.requests, ElementsAre("open", registerSubtree, registerSubtree, registerSubtree));
    emit session.answered(MasterSession::noError);
    EXPECT_EQ(session.requests.back(), registerOwnObjects);
}

TEST_F(MasterLinkTest, ServesWithoutItsOwnObjectsIfAnotherAgentHasThem)
{
    start();
    emit session.answered(MasterSession::noError);
    emit session.answered(duplicateError);
    EXPECT_TRUE(isServing());
    EXPECT_THAT(log(), HasSubstr("refuses to register this agent's own objects"));
}

TEST_F(MasterLinkTest, SendsNothingWhileARequestIsPending)
{
    start();
    clock.advance(5000);
    EXPECT_THAT(session.requests, ElementsAre("open", registerSubtree));
    startServing();
    clock.advance(5000);
    EXPECT_THAT(session.requests, ElementsAre("ping"));
}

TEST_F(MasterLinkTest, PingsEverySecond)
{
    startServing();
    for (int i = 0; i < 3; ++i) {
        clock.advance(1000);
        emit session.answered(MasterSession::noError);
    }
    EXPECT_THAT(session.requests, ElementsAre("ping", "ping", "ping"));
    EXPECT_TRUE(isServing());
}

TEST_F(MasterLinkTest, KeepsTheSessionWhenAPingTimesOut)
{
    startServing();
    clock.advance(1000);
    emit session.unanswered();
    EXPECT_THAT(log(), HasSubstr("snmpd at /a/master does not answer"));
    EXPECT_TRUE(isServing());
    clock.advance(1000);
    emit session.unanswered();
    EXPECT_THAT(session.requests, ElementsAre("ping", "ping"));
    EXPECT_EQ(log(), "") << "the same problem";
    clock.advance(1000);
    emit session.answered(MasterSession::noError);
    clock.advance(1000);
    emit session.unanswered();
    EXPECT_THAT(log(), HasSubstr("does not answer")) << "a new problem";
}

TEST_F(MasterLinkTest, HangsUpWhenAPingIsRefused)
{
    startServing();
    clock.advance(1000);
    emit session.answered(MasterSession::notOpenError);
    EXPECT_THAT(session.requests, ElementsAre("ping", "hang up"));
    EXPECT_THAT(log(), HasSubstr("the connection to snmpd at /a/master is lost"));
    EXPECT_TRUE(isWaiting());
}

// A late reply could be mistaken for the reply to the next request.
TEST_F(MasterLinkTest, HangsUpWhenARegistrationTimesOut)
{
    start();
    emit session.unanswered();
    EXPECT_EQ(session.requests.back(), "hang up");
    EXPECT_THAT(log(), Not(HasSubstr("is lost"))) << "it was not serving yet";

    emit session.closed();
    clock.advance(1000);
    emit session.answered(MasterSession::noError);
    emit session.unanswered();
    EXPECT_EQ(session.requests.back(), "hang up");
}

TEST_F(MasterLinkTest, HangsUpWhenSnmpdDoesNotKnowTheSession)
{
    start();
    emit session.answered(MasterSession::notOpenError);
    EXPECT_EQ(session.requests.back(), "hang up");

    emit session.closed();
    clock.advance(1000);
    emit session.answered(MasterSession::noError);
    emit session.answered(MasterSession::notOpenError);
    EXPECT_EQ(session.requests.back(), "hang up");
}

TEST_F(MasterLinkTest, HangsUpWhenARequestCannotBeSent)
{
    session.canSend = false;
    start();
    EXPECT_THAT(session.requests, ElementsAre("open", registerSubtree, "hang up"));
}

TEST_F(MasterLinkTest, SendsNothingBetweenHangingUpAndTheEndOfTheSession)
{
    startServing();
    session.canSend = false;
    clock.advance(5000);
    EXPECT_THAT(session.requests, ElementsAre("ping", "hang up"));
    emit session.closed();
    session.canSend = true;
    clock.advance(1000);
    EXPECT_THAT(session.requests, ElementsAre("ping", "hang up", "open", registerSubtree));
}

TEST_F(MasterLinkTest, JoinsAgainAfterALossWithOneWarning)
{
    startServing();
    session.isReachable = false;
    emit session.closed();
    EXPECT_THAT(log(), HasSubstr("the connection to snmpd at /a/master is lost"));
    EXPECT_TRUE(isWaiting());
    clock.advance(2000);
    EXPECT_THAT(session.requests, ElementsAre("open", "open"));
    EXPECT_EQ(log(), "");
    session.isReachable = true;
    clock.advance(1000);
    emit session.answered(MasterSession::noError);
    emit session.answered(MasterSession::noError);
    EXPECT_TRUE(isServing());
}

TEST_F(MasterLinkTest, JoinsAgainWhenTheSessionClosesDuringARequest)
{
    startServing();
    session.canSend = false;
    session.closesOnSend = true;
    clock.advance(1000);
    EXPECT_THAT(session.requests, ElementsAre("ping"));
    clock.advance(1000);
    EXPECT_EQ(session.requests[1], "open");
}

TEST_F(MasterLinkTest, StoppedSendsNothing)
{
    startServing();
    link.stop();
    clock.advance(5000);
    EXPECT_THAT(session.requests, IsEmpty());
}
