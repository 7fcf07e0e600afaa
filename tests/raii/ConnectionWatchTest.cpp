// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/raii.h>

#include <gmock/gmock.h>

#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <vector>

#include "support/Deadline.h"
#include "support/LibraryTest.h"

using testing::ElementsAre;

namespace {

class States
{
public:
    void add(bool state)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_states.push_back(state);
        m_changed.notify_all();
    }

    std::vector<bool> waitFor(std::size_t count)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, std::chrono::milliseconds(support::deadlineMs),
                           [&] { return m_states.size() >= count; });
        return m_states;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<bool> m_states;
};

class ConnectionWatchTest : public support::LibraryTest
{
protected:
    ConnectionWatchTest() { start(); }

    States states;
};

TEST_F(ConnectionWatchTest, HearsOfALossUntilItEnds)
{
    vigil::ConnectionWatch watch([this](bool isConnected) { states.add(isConnected); });
    vigil::ConnectionWatch moved(std::move(watch));
    service.refuseConnections();
    service.closeConnection();
    EXPECT_THAT(states.waitFor(1), ElementsAre(false));
    moved.reset();
    service.acceptConnections();
    EXPECT_TRUE(service.waitForConnections(2));
    settle();
    EXPECT_THAT(states.waitFor(1), ElementsAre(false));
}

TEST_F(ConnectionWatchTest, MayEndInsideItsOwnFunction)
{
    std::promise<void> assigned;
    vigil::ConnectionWatch watch;
    watch = vigil::ConnectionWatch([&](bool isConnected) {
        assigned.get_future().wait();
        watch.reset();
        states.add(isConnected);
    });
    assigned.set_value();
    service.closeConnection();
    EXPECT_THAT(states.waitFor(1), ElementsAre(false));
    EXPECT_TRUE(service.waitForConnections(2));
    settle();
    EXPECT_THAT(states.waitFor(1), ElementsAre(false));
}

} // namespace
