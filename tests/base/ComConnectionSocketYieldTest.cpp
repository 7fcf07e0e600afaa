// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "ComConnectionSocketTest.h"

#include <QPointer>
#include <QTcpSocket>

#include "support/Deadline.h"

using support::QtMessages;
using support::runUntil;
using testing::ElementsAreArray;

using ComConnectionSocketYield = ComConnectionSocketTest;

TEST_F(ComConnectionSocketYield, OtherEventsRunDuringAReadOnceAQuarterSecondHasPassed)
{
    connectToService();

    bool otherEventRan = false;
    runDuringTheYield([&] { otherEventRan = true; });

    EXPECT_TRUE(otherEventRan);
    EXPECT_THAT(payloads(), ElementsAreArray({"a"}));
}

TEST_F(ComConnectionSocketYield, NoOtherEventsRunWhileAFrameIsIncomplete)
{
    connectToService();
    letTheYieldComeDue();

    bool otherEventRan = false;
    QMetaObject::invokeMethod(
        socket.get(), [&] { otherEventRan = true; }, Qt::QueuedConnection);
    service.sendRaw(frame(1, "a").left(20));
    ASSERT_TRUE(socket->socket()->waitForReadyRead(support::deadlineMs));
    ASSERT_EQ(socket->socket()->bytesAvailable(), 0);
    EXPECT_FALSE(otherEventRan);
}

TEST_F(ComConnectionSocketYield, NoOtherEventsRunAfterAWrongMagic)
{
    connectToService();
    letTheYieldComeDue();

    const QtMessages messages;
    bool otherEventRan = false;
    QMetaObject::invokeMethod(
        socket.get(), [&] { otherEventRan = true; }, Qt::QueuedConnection);
    service.sendRaw(frame(1, "a") + junk);
    ASSERT_TRUE(socket->socket()->waitForReadyRead(support::deadlineMs));
    ASSERT_THAT(errors(), ElementsAreArray({"___Network error detected - resetting buffers___"}));
    EXPECT_FALSE(otherEventRan);
}

TEST_F(ComConnectionSocketYield, NothingIsReadWhileOtherEventsRun)
{
    connectToService();
    std::size_t receivedInside = 0;
    runDuringTheYield([&] {
        service.sendRaw(frame(2, "b"));
        socket->socket()->waitForReadyRead(support::deadlineMs);
        ASSERT_GT(socket->socket()->bytesAvailable(), 0);
        for (const char* slot : {"slot_readyRead", "slot_readDataFromSocket", "slot_computeReceivedData"})
            QMetaObject::invokeMethod(socket.get(), slot, Qt::DirectConnection);
        receivedInside = received.size();
    });
    EXPECT_EQ(receivedInside, 1u) << "only the frame whose read has yielded";

    ASSERT_TRUE(waitForReceived(2));
    EXPECT_THAT(payloads(), ElementsAreArray({"a", "b"}));
}

TEST_F(ComConnectionSocketYield, AnotherEventMayCloseTheConnection)
{
    connectToService();

    runDuringTheYield([&] { socket->closeConnection(); });

    EXPECT_FALSE(socket->isConnected());
    EXPECT_TRUE(service.waitForDisconnections(1));
}

TEST_F(ComConnectionSocketYield, ReadsOnTheNextConnectionIfAnotherEventClosedTheFirst)
{
    connectToService();
    runDuringTheYield([&] { socket->closeConnection(); });

    connectToService();
    deliver(frame(1, "b"));

    EXPECT_THAT(payloads(), ElementsAreArray({"a", "b"}));
}

// A yield also carries out deleteLater(), while the read that yields still uses both objects.
TEST_F(ComConnectionSocketYield, AnObjectDisposedOfByAnotherEventLivesUntilTheReadReturns)
{
    connectToService();
    const QPointer<base::ComConnectionSocket> object(socket.get());
    const QPointer<QTcpSocket> connection(socket->socket());
    bool bothOutliveTheYield = false;

    runDuringTheYield([&] {
        // Deleted last in this yield, after all that dispose() may have scheduled.
        auto* const endOfYield = new QObject;
        QObject::connect(endOfYield, &QObject::destroyed,
                         [&] { bothOutliveTheYield = object && connection; });
        socket.release()->dispose();
        endOfYield->deleteLater();
    });

    EXPECT_TRUE(bothOutliveTheYield);
    EXPECT_TRUE(runUntil([&] { return !object && !connection; }));
    EXPECT_TRUE(service.waitForDisconnections(1));
}
