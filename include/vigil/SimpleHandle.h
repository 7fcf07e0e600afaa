// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SIMPLEHANDLE_H
#define VIGIL_SIMPLEHANDLE_H

#include <memory>
#include <string>

#include <vigil/CheckHandle.h>
#include <vigil/Result.h>
#include <vigil/SimpleMetric.h>
#include <vigil/detail/HandleSupport.h>
#include <vigil/detail/OwnedMetric.h>

namespace vigil {

/// Owns a simple metric: the constructor creates it, the destructor removes it and its rows.
///
/// \code
/// vigil::CheckHandle check("shop", "database");
/// vigil::SimpleHandle server(check, "server");
/// server.set(vigil::HealthStatus::Critical, "no reply for 30 s");
/// check.update(); // CRITICAL, "server is CRITICAL, no reply for 30 s."
/// \endcode
///
/// Purpose: see SimpleMetric for the metric itself.
///
/// Threads, ownership and failure: as for ScalarHandle.
class SimpleHandle : public detail::Handle<detail::OwnedSimple>
{
public:
    SimpleHandle() noexcept = default;

    /// Creates a metric of check. The name is UTF-8.
    SimpleHandle(CheckHandle& check, const std::string& name) : Handle(create(check, name)) {}

    std::string getName() const
    {
        return content().get([](SimpleMetric& metric) { return metric.getName(); });
    }

    /// Sets both at once: no update sees the one without the other. info is UTF-8.
    void set(HealthStatus status, const std::string& info)
    {
        content().set([&](SimpleMetric& metric) {
            metric.setInfo(info);
            metric.setStatus(status);
        });
    }

    void setStatus(HealthStatus status)
    {
        content().set([=](SimpleMetric& metric) { metric.setStatus(status); });
    }

    HealthStatus getStatus() const
    {
        return content().get([](SimpleMetric& metric) { return metric.getStatus(); });
    }

    void setInfo(const std::string& info)
    {
        content().set([&](SimpleMetric& metric) { metric.setInfo(info); });
    }

    void setTemplate(const std::string& text)
    {
        content().set([&](SimpleMetric& metric) { metric.setTemplate(text); });
    }

    void setPerformanceDataEnabled(bool enabled)
    {
        content().set([=](SimpleMetric& metric) { metric.setPerformanceDataEnabled(enabled); });
    }

    /// For calls of the library itself. Valid until the handle ends its metric; the check's lock is not held.
    /// Do not remove it.
    SimpleMetric* get() const { return content().metric(); }

private:
    friend class Updater;

    static std::shared_ptr<detail::OwnedSimple> create(CheckHandle& check, const std::string& name)
    {
        return detail::createMetric<detail::OwnedSimple>(
            check.shared(), name, [&](HealthCheck& owner) { return owner.createSimpleMetric(name); });
    }
};

} // namespace vigil

#endif
