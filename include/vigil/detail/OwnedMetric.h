// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_DETAIL_OWNEDMETRIC_H
#define VIGIL_DETAIL_OWNEDMETRIC_H

// Of no use to an application: the contents of ScalarHandle and SimpleHandle.

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include <vigil/Range.h>
#include <vigil/RangeChangeHandler.h>
#include <vigil/ScalarMetric.h>
#include <vigil/SimpleMetric.h>
#include <vigil/detail/HandleSupport.h>
#include <vigil/detail/OwnedCheck.h>
#include <vigil/vigil_export.h>

extern "C" {
/// Makes metric UNKNOWN until its next value. A part of <vigil/raii.h>: use ScalarHandle::setUnknown().
VIGIL_EXPORT void vigil_cxx_set_unknown(vigil::ScalarMetric* metric, const char* reason);
}

namespace vigil {
namespace detail {

/// A metric of a check; it keeps the locks of the check.
template <typename Metric>
class OwnedMetric : public Owned
{
public:
    OwnedMetric(std::shared_ptr<OwnedCheck> check, std::string name)
        : m_check(std::move(check)), m_name(std::move(name))
    {}

    void adopt(Metric* metric) { m_metric = metric; }

    OwnedCheck& check() const { return *m_check; }
    const std::string& name() const { return m_name; }

    /// The result of operation(metric), for operations that publish nothing.
    template <typename Operation>
    auto get(Operation operation) -> decltype(operation(std::declval<Metric&>()))
    {
        const ScopedLock lock(m_check->valueLock());
        if (!m_metric)
            throw std::logic_error("the metric has ended: " + m_name);
        return operation(*m_metric);
    }

    /// Runs operation(metric). Does nothing once the metric or its check has ended: then false.
    template <typename Operation>
    bool set(Operation operation)
    {
        const ScopedLock lock(m_check->valueLock());
        if (!m_metric || !m_check->get())
            return false;
        operation(*m_metric);
        return true;
    }

    Metric* metric() const { return m_metric; }

protected:
    bool end() noexcept override
    {
        const ScopedLock lock(m_check->structureLock());
        Metric* metric = nullptr;
        {
            const ScopedLock valueLock(m_check->valueLock());
            std::swap(metric, m_metric);
        }
        if (!untilMemory([metric] { metric->remove(); }))
            return false;
        m_check->forgetMetric(m_name);
        return true;
    }

private:
    const std::shared_ptr<OwnedCheck> m_check;
    const std::string m_name;
    Metric* m_metric = nullptr; // changes under both locks of the check
};

/// create(check) makes the library's metric. All other memory is taken before.
template <typename Owner, typename Create>
std::shared_ptr<Owner> createMetric(const std::shared_ptr<OwnedCheck>& check, const std::string& name,
                                    Create create)
{
    if (!check)
        throw std::logic_error("an empty handle was used");
    std::shared_ptr<Owner> owner = std::make_shared<Owner>(check, name);
    owner->adopt(check->createMetric(name, create));
    return owner;
}

using OwnedSimple = OwnedMetric<SimpleMetric>;

/// Passes a manager's changes of ranges to functions, and publishes each new range.
class RangeAdapter : public RangeChangeHandler
{
public:
    using Accept = std::function<bool(RangeKind, const Range&)>;
    using Changed = std::function<void(RangeKind, const Range&)>;

    RangeAdapter(Accept accept, Changed changed, const std::atomic<bool>& isMuted)
        : m_accept(std::move(accept)), m_changed(std::move(changed)), m_isMuted(isMuted)
    {}

private:
    bool acceptRangeChange(ScalarMetric*, RangeKind kind, const Range& range) override
    {
        return !m_isMuted && m_accept && m_accept(kind, range);
    }

    void rangeChanged(ScalarMetric* metric, RangeKind kind) override
    {
        if (m_isMuted)
            return;
        const bool isWarning = kind == RangeKind::Warning;
        const Range range = isWarning ? metric->getWarningRange() : metric->getCriticalRange();
        if (isWarning)
            metric->setWarningRange(range);
        else
            metric->setCriticalRange(range);
        if (m_changed)
            m_changed(kind, range);
    }

    const Accept m_accept;
    const Changed m_changed;
    const std::atomic<bool>& m_isMuted;
};

class OwnedScalar : public OwnedMetric<ScalarMetric>
{
public:
    using OwnedMetric<ScalarMetric>::OwnedMetric;

    /// As set(): false if the metric or its check has ended.
    bool setRangeHandler(RangeAdapter::Accept accept, RangeAdapter::Changed changed)
    {
        refuseInsideCallback("a range handler was set");
        std::unique_ptr<RangeAdapter> adapter(
            new RangeAdapter(std::move(accept), std::move(changed), isMuted()));
        const ScopedLock lock(check().structureLock());
        if (!metric() || !check().get())
            return false;
        try {
            metric()->setRangeChangeHandler(adapter.get());
        } catch (...) { // a part of its work may be done
            if (!untilMemory([this] { metric()->clearRangeChangeHandler(); }))
                static_cast<void>(adapter.release());
            throw;
        }
        m_rangeAdapter.swap(adapter); // the calls of the earlier one are over; it goes without the lock
        return true;
    }

    /// The same.
    bool clearRangeHandler()
    {
        refuseInsideCallback("a range handler was cleared");
        std::unique_ptr<RangeAdapter> adapter;
        const ScopedLock lock(check().structureLock());
        if (!metric() || !check().get())
            return false;
        if (!m_rangeAdapter)
            return true;
        metric()->clearRangeChangeHandler();
        m_rangeAdapter.swap(adapter);
        return true;
    }

private:
    bool end() noexcept override
    {
        if (!OwnedMetric<ScalarMetric>::end())
            return false;
        std::unique_ptr<RangeAdapter> adapter;
        const ScopedLock lock(check().structureLock());
        m_rangeAdapter.swap(adapter);
        return true;
    }

    std::unique_ptr<RangeAdapter> m_rangeAdapter;
};

} // namespace detail
} // namespace vigil

#endif
