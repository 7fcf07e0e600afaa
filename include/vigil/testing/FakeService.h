// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTING_FAKESERVICE_H
#define VIGIL_TESTING_FAKESERVICE_H

#include <chrono>
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>

#include <vigil/Oid.h>
#include <vigil/VigilSnmpInterface.h>
#include <vigil/testing/PublishedTable.h>

namespace vigil {
namespace test {

/// How a manager's SET ended.
enum class SetResult {
    Accepted,   ///< the application accepted it, and has handled it
    Refused,    ///< the application refused it
    NoSuchCell, ///< nothing is published there
    NoReply     ///< the application was stopped, disconnected, or slower than the time-out
};

std::ostream& operator<<(std::ostream& out, SetResult result);

/// A service in the test's own process, in place of vigil-agent. It collects everything an application
/// publishes, acts as a manager, and fails on demand.
///
/// \code
/// vigil::test::FakeService service; // before the first check
/// vigil::CheckHandle check("shop", "orders");
/// vigil::ScalarHandle pending(check, "pending");
/// pending.setWarningRange(vigil::Range::CreateThresholdAbove(40));
/// pending.setValue(42);
/// check.update();
///
/// const vigil::test::PublishedTable table = service.published();
/// const vigil::test::PublishedCheck* orders = table.check("shop", "orders");
/// if (!orders || orders->status != vigil::HealthStatus::Warning)
///     std::cerr << "expected a warning:\n" << table;
/// \endcode
///
/// Purpose: tests of an application's own checks. Link vigil::testing beside vigil::vigil; it needs neither
/// Qt nor an event loop, and works with and without a QCoreApplication. <vigil/testing/Matchers.h> has
/// matchers for GoogleTest.
///
/// The constructor listens on a free port of 127.0.0.1 and sets VIGIL_SERVICE_PORT to it. Once it is
/// destroyed the variable has the port of the newest service left, or its first value. The library reads it
/// when the first check is created, and a child process inherits it. Tests may run in parallel, each in a
/// separate process. Set VIGIL_LOG_DIR to keep the library's log apart.
///
/// The table has the cells of connected applications only. When a connection ends, its cells are gone: after
/// a break the table is empty until the library has connected and sent everything again. It tries every 5
/// seconds.
///
/// Threads: a separate thread serves the connections, from construction to destruction. Any thread may call
/// the service. Do not call it in a callback of the library: it waits for the client thread. Construction and
/// destruction change the environment; no other thread may read it at that moment.
///
/// Ownership: may be destroyed before and after the application's checks.
///
/// Failure: the constructor throws std::system_error if the system has no port, descriptor or thread left.
/// Waits end after timeout() and say so in their result.
class FakeService
{
public:
    using Milliseconds = std::chrono::milliseconds;

    FakeService();
    ~FakeService();
    FakeService(const FakeService&) = delete;
    FakeService& operator=(const FakeService&) = delete;

    int port() const;

    /// The limit of each wait; 30 seconds by default. Only a failing test waits so long.
    Milliseconds timeout() const;
    void setTimeout(Milliseconds timeout);

    // Published values.

    /// Waits for everything this process has published before the call, and returns the table. Needs a live
    /// check. After a time-out something may be missing; the printed table says if nothing is connected.
    PublishedTable published() const
    {
        settle();
        return snapshot();
    }

    /// Returns once the table has everything this process has published before the call; false on time-out.
    bool settle() const
    {
        const int mark = nextMark();
        VigilSnmpInterface::instance().sendValue(Oid::fromStdString(markIdentifier()), mark, 0);
        return waitForMark(mark);
    }

    /// The table now, without a wait.
    PublishedTable snapshot() const;

    /// Waits until condition returns true; false on time-out. It runs on the calling thread.
    bool waitUntil(const std::function<bool(const PublishedTable&)>& condition) const;
    bool waitUntil(const std::function<bool(const PublishedTable&)>& condition, Milliseconds timeout) const;

    /// How many connections there are, and how many there were since construction.
    int connections() const;
    int connectionsSoFar() const;

    /// Wait until an application is connected, and until the last one is gone; false on time-out.
    bool waitForConnection() const;
    bool waitForDisconnection() const;

    // A manager's SETs. Each returns once the application has handled it, callbacks included.

    SetResult setWarningRange(const std::string& firstKey, const std::string& secondKey,
                              const std::string& metric, const std::string& range);
    SetResult setCriticalRange(const std::string& firstKey, const std::string& secondKey,
                               const std::string& metric, const std::string& range);

    /// Triggers management function 1 to 5. NoSuchCell if the check has no functions.
    SetResult triggerFunction(const std::string& firstKey, const std::string& secondKey, int number);

    /// Any cell, by its full identifier.
    SetResult setNumber(const std::string& identifier, int number);
    SetResult setText(const std::string& identifier, const std::string& text);

    // Faults.

    /// Stops reading, now and on later connections. The system's buffers fill up; after that the library
    /// keeps its values back. SETs get no reply.
    void stall();

    /// Reads again.
    void resume();

    /// Closes all connections. The library connects again.
    void breakConnections();

    /// Closes all connections and refuses new ones; the port stays reserved.
    void goAway();

    /// Accepts connections again.
    void comeBack();

private:
    class State;

    static int nextMark();
    static std::string markIdentifier();
    bool waitForMark(int mark) const;

    const std::unique_ptr<State> m_state;
};

/// The table of this moment, for failure messages.
std::ostream& operator<<(std::ostream& out, const FakeService& service);

} // namespace test
} // namespace vigil

#endif
