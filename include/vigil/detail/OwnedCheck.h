// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_DETAIL_OWNEDCHECK_H
#define VIGIL_DETAIL_OWNEDCHECK_H

// Of no use to an application: the content of a CheckHandle.

#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include <vigil/HealthCheck.h>
#include <vigil/ManagementHandler.h>
#include <vigil/detail/HandleSupport.h>

namespace vigil {
namespace detail {

/// Shared, because a function may be running while the array is copied.
using ManagementFunctions = std::array<std::shared_ptr<const std::function<void()>>, 5>;

/// Passes a manager's triggers to functions.
class FunctionAdapter : public ManagementHandler
{
public:
    FunctionAdapter(ManagementFunctions functions, const std::atomic<bool>& isMuted)
        : m_functions(std::move(functions)), m_isMuted(isMuted)
    {}

    const ManagementFunctions& functions() const { return m_functions; }

private:
    void managementFunction1() override { call(0); }
    void managementFunction2() override { call(1); }
    void managementFunction3() override { call(2); }
    void managementFunction4() override { call(3); }
    void managementFunction5(const std::string&) override { call(4); }

    void call(std::size_t index)
    {
        if (!m_isMuted && m_functions[index] && *m_functions[index])
            (*m_functions[index])();
    }

    const ManagementFunctions m_functions;
    const std::atomic<bool>& m_isMuted;
};

/// A check with its two locks.
///
/// The structure lock is held by operations that may wait for a callback: creating and ending, and changing
/// handlers. No callback ever takes it, since these operations are refused there. The value lock is held by
/// all others. It is taken last and never held while waiting for a callback, so a callback may take it.
class OwnedCheck : public Owned
{
public:
    OwnedCheck(const std::string& firstKey, const std::string& secondKey)
        : m_check(createHealthCheck(firstKey, secondKey))
    {
        if (!m_check)
            throw std::bad_alloc();
    }

    std::mutex& structureLock() { return m_structureLock; }
    std::mutex& valueLock() { return m_valueLock; }

    /// Null once the check has ended. The caller holds one of the locks.
    HealthCheck* get() const { return m_check; }

    /// The result of operation(check). Does nothing, with an empty result, once the check has ended.
    template <typename Operation>
    auto use(Operation operation) -> decltype(operation(std::declval<HealthCheck&>()))
    {
        const ScopedLock lock(m_valueLock);
        if (m_check)
            return operation(*m_check);
        return decltype(operation(std::declval<HealthCheck&>()))();
    }

    /// create(check), for a metric with a name no other handle of this check has.
    template <typename Create>
    auto createMetric(const std::string& name, Create create)
        -> decltype(create(std::declval<HealthCheck&>()))
    {
        refuseInsideCallback("a metric was created");
        const ScopedLock lock(m_structureLock);
        if (!m_check)
            throw std::logic_error("the check has ended");
        if (!m_names.insert(name).second)
            throw std::invalid_argument("the check has a metric of this name: " + name);
        try {
            if (auto* metric = create(*m_check))
                return metric;
            throw std::logic_error("no metric was created");
        } catch (...) {
            m_names.erase(name);
            throw;
        }
    }

    /// The caller holds the structure lock.
    void forgetMetric(const std::string& name) { m_names.erase(name); }

    void setFunction(std::size_t index, std::function<void()> function)
    {
        const auto shared = std::make_shared<const std::function<void()>>(std::move(function));
        changeFunctions([&](ManagementFunctions& functions) { functions.at(index) = shared; });
    }

    void setFunctions(ManagementFunctions all)
    {
        changeFunctions([&](ManagementFunctions& functions) { functions = std::move(all); });
    }

protected:
    bool end() noexcept override
    {
        std::unique_ptr<FunctionAdapter> functions;
        const ScopedLock lock(m_structureLock);
        HealthCheck* check = nullptr;
        {
            const ScopedLock valueLock(m_valueLock);
            std::swap(check, m_check);
        }
        check->destroy();
        m_functions.swap(functions);
        return true;
    }

private:
    template <typename Change>
    void changeFunctions(Change change)
    {
        refuseInsideCallback("a management function was set");
        std::unique_ptr<FunctionAdapter> adapter; // the earlier one in the end: it goes without the lock
        const ScopedLock lock(m_structureLock);
        if (!m_check)
            throw std::logic_error("the check has ended");
        ManagementFunctions functions = m_functions ? m_functions->functions() : ManagementFunctions();
        change(functions);
        adapter.reset(new FunctionAdapter(std::move(functions), isMuted()));
        try {
            m_check->registerManagementHandler(adapter.get());
        } catch (...) { // a part of its work may be done
            m_check->unregisterManagementHandler();
            throw;
        }
        m_functions.swap(adapter);
    }

    std::mutex m_structureLock;
    std::mutex m_valueLock;
    HealthCheck* m_check; // changes under both locks
    std::unique_ptr<FunctionAdapter> m_functions;
    std::set<std::string> m_names;
};

} // namespace detail
} // namespace vigil

#endif
