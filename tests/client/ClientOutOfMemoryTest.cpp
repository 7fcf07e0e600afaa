// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The client thread runs out of memory: every allocation of its code fails once, alone or with all further
// ones. Qt's own are left out. An exception may not pass through its event loop, and no code of the library
// stands in between.

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QTcpSocket>

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "base/ComConnectionSocket.h"
#include "base/wire/Protocol.h"
#include "client/Client.h"
#include "support/FakeService.h"
#include "support/FaultyMemory.h"
#include "support/LibraryLog.h"
#include "support/Load.h"
#include "support/Publications.h"
#include "support/RunUntil.h"
#include "support/ShownCells.h"

using faults::OutOfMemory;
using support::FakeService;
using support::set;

namespace {

const std::string markOid = "99.99"; // of the value that is sent last

Oid below(const std::string& relative)
{
    return Oid::fromStdString("1.3.6.1.4.1.32473." + relative);
}

/// A client in the thread of the test.
class ClientOutOfMemory : public testing::Test
{
protected:
    using Extent = OutOfMemory::Extent;
    using Action = std::function<void()>;

    ClientOutOfMemory()
    {
        qputenv("VIGIL_SERVICE_PORT", QByteArray::number(service.port()));
        qRegisterMetaType<Oid>("Oid");
        client->init();
        EXPECT_TRUE(service.waitForConnections(1));
    }

    /// Posts a call, as the application's threads do.
    template <typename... Arguments>
    void post(const char* slot, Arguments... arguments)
    {
        QMetaObject::invokeMethod(client.get(), slot, Qt::QueuedConnection, arguments...);
    }

    void postValue(const std::string& oid, int value)
    {
        post("sendValue", Q_ARG(Oid, below(oid)), Q_ARG(qint32, value), Q_ARG(bool, false));
        said.write(oid, set(oid, value));
    }

    void deliver() { QCoreApplication::sendPostedEvents(client.get(), 0); }

    /// Lets every allocation of action fail in turn.
    void atEveryPoint(Extent extent, const Action& prepare, const Action& action)
    {
        bool hasFailed = true;
        for (int succeeding = 0; hasFailed && !HasFailure(); succeeding += support::isFullLoad() ? 1 : 3) {
            SCOPED_TRACE("after " + std::to_string(succeeding) + " allocations");
            prepare();
            {
                const OutOfMemory fault(succeeding, extent, OutOfMemory::Callers::AllButQt);
                action();
                hasFailed = fault.hasFailed();
            }
            client->onTimerReconnect(); // the next turn of the timer
            expectTruth();
        }
    }

    void expectTruth()
    {
        const std::string mark = set(markOid, ++m_mark);
        client->sendValue(below(markOid), m_mark, false);
        ASSERT_TRUE(support::runUntil([&] {
            for (const FakeService::Frame& frame : service.frames(m_frames)) {
                ++m_frames;
                m_shown.read(frame);
            }
            return m_shown.cells().count(markOid) > 0 && m_shown.cells().at(markOid) == mark;
        }));
        std::map<std::string, std::string> shown = m_shown.cells();
        shown.erase(markOid);
        EXPECT_EQ(shown, said.cells());
    }

    base::ComConnectionSocket& connection() { return *client->findChild<base::ComConnectionSocket*>(); }

    void loseConnection()
    {
        service.closeConnection();
        EXPECT_TRUE(support::runUntil([&] { return connection().socket() == nullptr; }));
    }

    support::LibraryLog log;
    FakeService service;
    support::ShownCells said;
    std::unique_ptr<::Client> client = std::make_unique<::Client>();

private:
    support::ShownCells m_shown;
    std::size_t m_frames = 0;
    int m_mark = 0;
};

TEST_F(ClientOutOfMemory, StillPublishesAValue)
{
    int value = 0;
    const auto prepare = [&] {
        ++value;
        postValue("1." + std::to_string(value % 5), value);
    };
    atEveryPoint(Extent::OneAllocation, prepare, [this] { deliver(); });
}

TEST_F(ClientOutOfMemory, StillWithdrawsAValue)
{
    const auto prepare = [this] {
        client->sendValue(below("1.1"), 5, false);
        post("unsetOid", Q_ARG(Oid, below("1.1")));
    };
    atEveryPoint(Extent::OneAllocation, prepare, [this] { deliver(); });
}

TEST_F(ClientOutOfMemory, StillWithdrawsATree)
{
    const auto prepare = [this] {
        client->sendValue(below("1.1"), 5, false);
        client->sendValue(below("1.2"), 6, false);
        post("unsetOidTree", Q_ARG(Oid, below("1")));
    };
    atEveryPoint(Extent::OneAllocation, prepare, [this] { deliver(); });
}

class ClientOutOfMemoryOnce : public ClientOutOfMemory,
                              public testing::WithParamInterface<OutOfMemory::Extent>
{
};

TEST_P(ClientOutOfMemoryOnce, ReplaysAllAfterALoss)
{
    for (int i = 1; i <= 5; ++i) {
        client->sendValue(below("1." + std::to_string(i)), i, false);
        said.write("1." + std::to_string(i), set("1." + std::to_string(i), i));
    }
    atEveryPoint(
        GetParam(), [this] { loseConnection(); }, [this] { client->onTimerReconnect(); });
}

TEST_P(ClientOutOfMemoryOnce, KeepsItsStateWhenItReceivesASet)
{
    postValue("1.1", 5);
    deliver();
    const auto prepare = [this] {
        service.send(base::SnmpIntType, support::encodedInt("1.1", 7), base::Validation);
    };
    atEveryPoint(GetParam(), prepare,
                 [this] { connection().socket()->waitForReadyRead(support::deadlineMs); });
}

TEST_P(ClientOutOfMemoryOnce, NoticesALoss)
{
    postValue("1.1", 5);
    deliver();
    const auto prepare = [this] { service.closeConnection(); };
    atEveryPoint(GetParam(), prepare, [this] {
        if (QTcpSocket* socket = connection().socket())
            socket->waitForDisconnected(support::deadlineMs);
    });
}

INSTANTIATE_TEST_SUITE_P(Extents, ClientOutOfMemoryOnce,
                         testing::Values(OutOfMemory::Extent::OneAllocation, OutOfMemory::Extent::AllFurther),
                         [](const auto& extent) {
                             return extent.param == OutOfMemory::Extent::OneAllocation ? "OneAllocation"
                                                                                       : "AllFurther";
                         });

} // namespace
