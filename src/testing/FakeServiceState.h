// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTING_FAKESERVICESTATE_H
#define VIGIL_TESTING_FAKESERVICESTATE_H

#include <vigil/testing/FakeService.h>
#include <vigil/testing/PublishedTable.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "testing/FrameServer.h"
#include "testing/Record.h"

namespace vigil::test {

/// The memory of a FakeService: the cells of each connection, the marks and the replies.
///
/// Threads: the server's thread writes, any thread reads; one mutex guards all.
class FakeServiceState final : private FrameListener
{
public:
    using Milliseconds = std::chrono::milliseconds;

    FakeServiceState() : m_server(*this) {}

    FrameServer& server() { return m_server; }

    Milliseconds timeout() const;
    void setTimeout(Milliseconds timeout);

    PublishedTable table() const;

    /// Waits until condition returns true. It runs under the lock and may use the functions below.
    bool waitFor(const std::function<bool()>& condition, Milliseconds timeout) const;
    int mark() const { return m_mark; }
    int connections() const { return static_cast<int>(m_cells.size()); }
    int connectionsSoFar() const { return m_connectionsSoFar; }

    /// Waits until condition holds for the table. It runs without the lock.
    bool waitForTable(const std::function<bool(const PublishedTable&)>& condition,
                      Milliseconds timeout) const;

    /// Asks the owner of the cell, and commits if it agrees.
    SetResult set(const std::string& identifier, const PublishedCell& value);

private:
    void connected(int connection) override;
    void disconnected(int connection) override;
    void received(const std::string& bytes, const std::vector<Frame>& frames) override;
    void apply(const Frame& frame);
    void publish(PublishedTable::Cells& cells, const Record& record, bool isNotification);

    template <typename Change>
    void change(Change apply);
    PublishedTable tableUnderLock() const;
    int ownerOf(const std::string& identifier) const;

    SetResult ask(int connection, Record request);
    void commit(int connection, const Record& record);

    mutable std::mutex m_mutex; // guards all but the server
    mutable std::condition_variable m_changed;
    std::map<int, PublishedTable::Cells> m_cells; // of each connection, by full identifiers
    std::map<int, int> m_replies;                 // error statuses, by the number of the request
    Milliseconds m_timeout = std::chrono::seconds(30);
    unsigned int m_version = 0; // of the cells
    int m_connectionsSoFar = 0;
    int m_mark = 0;
    int m_lastRequest = 0;
    FrameServer m_server; // last: its thread uses all others
};

} // namespace vigil::test

#endif
