// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_UPDATER_H
#define VIGIL_UPDATER_H

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <vigil/CheckHandle.h>
#include <vigil/Result.h>
#include <vigil/ScalarHandle.h>
#include <vigil/SimpleHandle.h>
#include <vigil/detail/HandleSupport.h>

namespace vigil {

/// What a function tells an Updater about a simple metric.
struct Reading
{
    HealthStatus status;
    std::string info; ///< UTF-8
};

namespace detail {

/// The checks and functions of an Updater, and the pace of its thread. The thread shares it, so that the
/// Updater may be destroyed on this very thread.
class UpdateLoop
{
public:
    using Clock = std::chrono::steady_clock;

    explicit UpdateLoop(std::chrono::milliseconds interval)
        : m_interval((std::min)(interval, std::chrono::milliseconds(std::chrono::hours(24 * 365))))
    {
        if (interval <= interval.zero())
            throw std::invalid_argument("the interval of an updater must be above 0");
    }

    /// Entries are read once a turn; false ends an entry.
    void add(std::shared_ptr<OwnedCheck> check, std::function<bool()> read)
    {
        const ScopedLock lock(m_mutex);
        m_entries.push_back(std::make_shared<Entry>(Entry{std::move(check), std::move(read)}));
    }

    void updateNow()
    {
        const ScopedLock lock(m_mutex);
        m_isWanted = true;
        m_changed.notify_one();
    }

    void stop()
    {
        const ScopedLock lock(m_mutex);
        m_isStopped = true;
        m_changed.notify_one();
    }

    void run() noexcept
    {
        Clock::time_point due = Clock::now();
        do {
            const bool isDue = due <= Clock::now(); // else updateNow() has asked for this turn
            try {
                turn();
            } catch (...) {
                // No memory is left; the next turn may have some.
            }
            if (isDue)
                due = (std::max)(due + m_interval, Clock::now());
        } while (wait(due));
    }

private:
    struct Entry
    {
        std::shared_ptr<OwnedCheck> check;
        std::function<bool()> read;
    };
    using Entries = std::vector<std::shared_ptr<Entry>>;

    bool wait(Clock::time_point due)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_until(lock, due, [this] { return m_isStopped || m_isWanted; });
        m_isWanted = false;
        return !m_isStopped;
    }

    bool isStopped()
    {
        const ScopedLock lock(m_mutex);
        return m_isStopped;
    }

    Entries entries()
    {
        const ScopedLock lock(m_mutex);
        return m_entries;
    }

    /// Reads everything, then updates each check once.
    void turn()
    {
        std::vector<OwnedCheck*> checks;
        const Entries all = entries();
        for (const std::shared_ptr<Entry>& entry : all) {
            if (isStopped())
                return;
            if (!entry->read())
                remove(entry);
            else if (std::find(checks.begin(), checks.end(), entry->check.get()) == checks.end())
                checks.push_back(entry->check.get());
        }
        for (OwnedCheck* check : checks)
            check->use([](HealthCheck& used) { used.update(); });
    }

    void remove(const std::shared_ptr<Entry>& entry)
    {
        const ScopedLock lock(m_mutex);
        m_entries.erase(std::remove(m_entries.begin(), m_entries.end(), entry), m_entries.end());
    }

    const Clock::duration m_interval; // a longer one than a year could overflow
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Entries m_entries;
    bool m_isWanted = false;
    bool m_isStopped = false;
};

/// What read() returns, given to store(); UNKNOWN by fail(reason) if it throws.
template <typename Read, typename Store, typename Fail>
bool readGuarded(Read& read, Store store, Fail fail)
{
    try {
        return store(read());
    } catch (const std::exception& error) {
        return fail(std::string(error.what()));
    } catch (...) {
        return fail(std::string("its function failed"));
    }
}

} // namespace detail

/// Asks functions for values and updates checks, again and again, on a thread of its own.
///
/// \code
/// vigil::CheckHandle check("shop", "orders");
/// vigil::ScalarHandle pending(check, "pending");
/// vigil::SimpleHandle database(check, "database");
///
/// vigil::Updater updater(std::chrono::seconds(10));
/// updater.add(pending, [] { return 42; });
/// updater.add(database, [] { return vigil::Reading{vigil::HealthStatus::Ok, "replies"}; });
/// updater.start();
/// \endcode
///
/// Purpose: the timer the library does not have. A turn asks the functions in the order of add(), then
/// updates each of their checks once. The first turn begins with start(), the next one an interval later. A
/// turn that takes longer delays the next one.
///
/// Threads: any thread may call add() and updateNow(), a callback of the library too. Functions run on the
/// updater's thread, one at a time. They may add, end and create metrics, and destroy the updater.
///
/// Ownership: refers to checks and metrics, and survives them: once a metric or its check has ended, its
/// function is not called again. The destructor waits for a function or an update in progress, and for
/// nothing else. Afterwards no function is called. On its own thread and inside a callback of the library it
/// does not wait; a function in progress then runs to its end. Do not hold a lock of your own that a function
/// needs while you destroy it.
///
/// Failure: a function that throws makes its metric UNKNOWN, with the exception's text, until it returns
/// again. So does the value NaN. The thread never ends the process. The constructor throws
/// std::invalid_argument unless the interval is positive; one above a year counts as a year. start() throws
/// std::system_error if the system has no thread left.
class Updater
{
public:
    explicit Updater(std::chrono::milliseconds interval)
        : m_loop(std::make_shared<detail::UpdateLoop>(interval))
    {}

    ~Updater() { stop(); }

    Updater(const Updater&) = delete;
    Updater& operator=(const Updater&) = delete;

    /// Sets metric to value() in each turn. value returns a number.
    template <typename Value>
    void add(ScalarHandle& metric, Value value)
    {
        metric.content();
        const std::shared_ptr<detail::OwnedScalar>& owned = metric.shared();
        addEntry(owned, [owned, value]() mutable {
            return detail::readGuarded(
                value,
                [&](double number) {
                    const bool isNumber = number <= 0 || number >= 0; // <cmath> fails beside a macro "log"
                    if (!isNumber)                                    // no range would refuse it
                        throw std::domain_error("its value is not a number");
                    return owned->set([=](ScalarMetric& scalar) { scalar.setValue(number); });
                },
                [&](const std::string& reason) {
                    return owned->set(
                        [&](ScalarMetric& scalar) { vigil_cxx_set_unknown(&scalar, reason.c_str()); });
                });
        });
    }

    /// Sets metric to reading() in each turn. reading returns a Reading.
    template <typename Read>
    void add(SimpleHandle& metric, Read reading)
    {
        metric.content();
        const std::shared_ptr<detail::OwnedSimple>& owned = metric.shared();
        const auto store = [owned](const Reading& read) {
            return owned->set([&](SimpleMetric& simple) {
                simple.setInfo(read.info);
                simple.setStatus(read.status);
            });
        };
        addEntry(owned, [reading, store]() mutable {
            return detail::readGuarded(reading, store, [&](const std::string& reason) {
                return store(Reading{HealthStatus::Unknown, reason});
            });
        });
    }

    /// Updates check in each turn, for metrics without a function here.
    void add(CheckHandle& check)
    {
        check.content();
        const std::shared_ptr<detail::OwnedCheck>& owned = check.shared();
        m_loop->add(owned, [owned] { return owned->use([](HealthCheck&) { return true; }); });
    }

    /// Starts the thread. Does nothing if it runs.
    void start()
    {
        if (m_thread.joinable())
            return;
        const std::shared_ptr<detail::UpdateLoop> loop = m_loop;
        m_thread = std::thread([loop] { loop->run(); });
    }

    /// Begins a turn at once, after the one in progress. Returns without waiting for it. The regular turns
    /// keep their times.
    void updateNow() { m_loop->updateNow(); }

private:
    template <typename Owned>
    void addEntry(const std::shared_ptr<Owned>& owned, std::function<bool()> read)
    {
        // Shares the metric, which shares the check.
        m_loop->add(std::shared_ptr<detail::OwnedCheck>(owned, &owned->check()), std::move(read));
    }

    void stop() noexcept
    {
        if (vigil_in_forked_child() && m_thread.joinable())
            return m_thread.detach(); // it is the parent's
        m_loop->stop();
        if (!m_thread.joinable())
            return;
        if (vigil_in_callback() || m_thread.get_id() == std::this_thread::get_id())
            m_thread.detach();
        else
            m_thread.join();
    }

    const std::shared_ptr<detail::UpdateLoop> m_loop;
    std::thread m_thread;
};

} // namespace vigil

#endif
