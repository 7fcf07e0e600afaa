// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CHECKHANDLE_H
#define VIGIL_CHECKHANDLE_H

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <vigil/HealthCheck.h>
#include <vigil/Result.h>
#include <vigil/detail/HandleSupport.h>
#include <vigil/detail/OwnedCheck.h>

namespace vigil {

/// Owns a health check: the constructor creates it, the destructor ends it.
///
/// \code
/// std::atomic<bool> isFlushWanted{false};
/// vigil::CheckHandle check("shop", "cache");
/// check.setDescription("Cache");
/// check.setFunction(1, [&] { isFlushWanted = true; }); // the manager sets function 1 to 2
///
/// vigil::SimpleHandle server(check, "server");
/// server.set(vigil::HealthStatus::Ok, "replies within 3 ms");
/// check.update();
/// \endcode
///
/// Purpose: see HealthCheck for the check itself. A handle can be moved, not copied. A moved-from handle is
/// empty; so is a default-constructed one.
///
/// Threads: any thread may use the check and its metrics at the same time; one lock a check keeps them apart.
/// The handle itself is like any object: no other thread may use it while it is moved, assigned or destroyed.
///
/// Functions run on the library's client thread and must return quickly. They may use the check and set
/// metrics. They may also move, assign and destroy handles: inside a callback a handle ends its check or
/// metric on a thread of its own as soon as the callback has returned. Once a handle is gone, none of its
/// functions is called again. Do not hold a lock of your own that a function needs while you set a function
/// or end a handle: both wait for a call in progress.
///
/// Ownership: handles of metrics may outlive the check. Their setters then do nothing. A child process forked
/// while the check lives may destroy the handles and leaves the parent's check alone.
/// Assignment creates the new check before it ends the old one, and two checks must not have the same keys.
/// So reset() the handle before you create a check with its keys again.
///
/// Failure: the constructor throws std::bad_alloc if no memory is left. Operations throw std::logic_error on
/// an empty handle; setting a function does so inside a callback, too. What a function throws is written to
/// the library's log. Like destroy(), the destructor throws nothing; for the last check of the process it may
/// take up to 8 seconds.
class CheckHandle : public detail::Handle<detail::OwnedCheck>
{
public:
    CheckHandle() noexcept = default;

    /// The keys are UTF-8, as for createHealthCheck().
    CheckHandle(const std::string& firstKey, const std::string& secondKey)
        : Handle(std::make_shared<detail::OwnedCheck>(firstKey, secondKey))
    {}

    std::string getFirstKey() const
    {
        return content().use([](HealthCheck& check) { return check.getFirstKey(); });
    }

    std::string getSecondKey() const
    {
        return content().use([](HealthCheck& check) { return check.getSecondKey(); });
    }

    void setDescription(const std::string& description)
    {
        content().use([&](HealthCheck& check) { check.setDescription(description); });
    }

    std::string getDescription() const
    {
        return content().use([](HealthCheck& check) { return check.getDescription(); });
    }

    /// Evaluates all metrics and publishes the outcome.
    void update()
    {
        content().use([](HealthCheck& check) { check.update(); });
    }

    /// The outcome of the last update().
    HealthStatus getStatus() const
    {
        return content().use([](HealthCheck& check) { return check.getStatus(); });
    }

    std::string getSummary() const
    {
        return content().use([](HealthCheck& check) { return check.getSummary(); });
    }

    std::vector<Result> getResults() const
    {
        std::vector<Result> results;
        content().use([&](HealthCheck& check) { check.getResults(results); });
        return results;
    }

    /// Calls function when a manager triggers the management function of this number, 1 to 5. It replaces an
    /// earlier one; an empty function does nothing. Waits for a call in progress. The first call publishes
    /// the management row.
    void setFunction(int number, std::function<void()> function)
    {
        if (number < 1 || number > 5)
            throw std::out_of_range("management functions have the numbers 1 to 5");
        content().setFunction(static_cast<std::size_t>(number - 1), std::move(function));
    }

    /// For calls of the library itself. Valid until the handle ends its check; the check's lock is not held.
    /// Do not destroy it, and register no handler through it.
    HealthCheck* get() const { return content().get(); }

private:
    friend class ScalarHandle;
    friend class SimpleHandle;
    friend class Updater;
};

} // namespace vigil

#endif
