// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The functions of <vigil/vigil_c.h> about metrics and ranges.

#include <vigil/ScalarHandle.h>
#include <vigil/SimpleHandle.h>

#include <memory>
#include <string>
#include <utility>

#include "c/Support.h"

using c::find;
using c::fromRange;
using c::guarded;
using c::output;
using c::refuseInsideCallback;
using c::require;
using c::text;
using c::toRange;
using vigil::HealthCheck;
using vigil::HealthStatus;
using vigil::Range;
using vigil::RangeKind;
using vigil::ScalarMetric;
using vigil::SimpleMetric;
using vigil::detail::OwnedCheck;
using vigil::detail::OwnedScalar;
using vigil::detail::OwnedSimple;

namespace {

template <typename Owner, typename Operation>
void set(vigil_metric* handle, Operation operation)
{
    require(find<Owner>(handle)->set(operation), VIGIL_CHECK_ENDED);
}

/// operation(metric) for a metric of either kind.
template <typename Operation>
void withEither(vigil_metric* handle, Operation operation)
{
    const auto object = find<vigil::detail::Owned>(handle);
    if (const auto scalar = std::dynamic_pointer_cast<OwnedScalar>(object))
        return operation(*scalar);
    const auto simple = std::dynamic_pointer_cast<OwnedSimple>(object);
    require(simple != nullptr, VIGIL_BAD_HANDLE);
    operation(*simple);
}

RangeKind toKind(int kind)
{
    require(kind == VIGIL_WARNING_RANGE || kind == VIGIL_CRITICAL_RANGE, VIGIL_BAD_VALUE);
    return static_cast<RangeKind>(kind);
}

} // namespace

// --- Ranges

vigil_code vigil_range_parse(const char* given, vigil_range* range)
{
    return guarded([&] {
        output(range);
        Range parsed;
        require(Range::fromString(text(given), parsed) == 0, VIGIL_BAD_VALUE);
        const vigil_range result = fromRange(parsed);
        static_cast<void>(toRange(&result)); // refuses the bound "nan", as every function that takes a range
        *range = result;
    });
}

vigil_code vigil_range_text(const vigil_range* range, char* buffer, size_t* size)
{
    return guarded([&] { c::writeText(toRange(range).toString(), buffer, size); });
}

vigil_code vigil_range_accepts(const vigil_range* range, double value, int* accepts)
{
    return guarded([&] { output(accepts) = toRange(range).match(value) ? 1 : 0; });
}

// --- Both kinds

vigil_code vigil_scalar_create(vigil_check* check, const char* name, vigil_metric** metric)
{
    return guarded([&] {
        refuseInsideCallback();
        output(metric);
        const std::string given = text(name);
        c::handOut(vigil::detail::createMetric<OwnedScalar>(
                       find<OwnedCheck>(check), given,
                       [&](HealthCheck& owner) { return owner.createScalarMetric(given); }),
                   metric);
    });
}

vigil_code vigil_simple_create(vigil_check* check, const char* name, vigil_metric** metric)
{
    return guarded([&] {
        refuseInsideCallback();
        output(metric);
        const std::string given = text(name);
        c::handOut(vigil::detail::createMetric<OwnedSimple>(
                       find<OwnedCheck>(check), given,
                       [&](HealthCheck& owner) { return owner.createSimpleMetric(given); }),
                   metric);
    });
}

vigil_code vigil_metric_free(vigil_metric* metric)
{
    return guarded([&] {
        if (!metric)
            return;
        withEither(metric, [](auto&) {});
        c::release<vigil::detail::Owned>(metric);
    });
}

vigil_code vigil_metric_name(vigil_metric* metric, char* buffer, size_t* size)
{
    return guarded(
        [&] { withEither(metric, [&](auto& owned) { c::writeText(owned.name(), buffer, size); }); });
}

vigil_code vigil_metric_set_performance_data(vigil_metric* metric, int enabled)
{
    return guarded([&] {
        withEither(metric, [&](auto& owned) {
            const auto enable = [&](auto& used) { used.setPerformanceDataEnabled(enabled != 0); };
            require(owned.set(enable), VIGIL_CHECK_ENDED);
        });
    });
}

// --- Scalar metrics

vigil_code vigil_scalar_set_value(vigil_metric* metric, double value)
{
    return guarded([&] { set<OwnedScalar>(metric, [&](ScalarMetric& used) { used.setValue(value); }); });
}

vigil_code vigil_scalar_value(vigil_metric* metric, double* value)
{
    return guarded([&] {
        output(value);
        *value = find<OwnedScalar>(metric)->get([](ScalarMetric& used) { return used.getValue(); });
    });
}

vigil_code vigil_scalar_set_unknown(vigil_metric* metric, const char* reason)
{
    return guarded([&] {
        const std::string given = text(reason);
        set<OwnedScalar>(metric, [&](ScalarMetric& used) { vigil_cxx_set_unknown(&used, given.c_str()); });
    });
}

vigil_code vigil_scalar_set_unit(vigil_metric* metric, const char* unit)
{
    return guarded([&] {
        const std::string given = text(unit);
        set<OwnedScalar>(metric, [&](ScalarMetric& used) { used.setUnit(given); });
    });
}

vigil_code vigil_scalar_unit(vigil_metric* metric, char* buffer, size_t* size)
{
    return guarded([&] {
        const auto unitOf = [](ScalarMetric& used) { return used.getUnit(); };
        c::writeText(find<OwnedScalar>(metric)->get(unitOf), buffer, size);
    });
}

vigil_code vigil_scalar_set_range(vigil_metric* metric, int kind, const vigil_range* range)
{
    return guarded([&] {
        const bool isWarning = toKind(kind) == RangeKind::Warning;
        const Range given = toRange(range);
        set<OwnedScalar>(metric, [&](ScalarMetric& used) {
            if (isWarning)
                used.setWarningRange(given);
            else
                used.setCriticalRange(given);
        });
    });
}

vigil_code vigil_scalar_range(vigil_metric* metric, int kind, vigil_range* range)
{
    return guarded([&] {
        output(range);
        const bool isWarning = toKind(kind) == RangeKind::Warning;
        *range = fromRange(find<OwnedScalar>(metric)->get([&](ScalarMetric& used) -> Range {
            return isWarning ? used.getWarningRange() : used.getCriticalRange();
        }));
    });
}

vigil_code vigil_scalar_set_range_handler(vigil_metric* metric, vigil_range_accept_callback accept,
                                          vigil_range_changed_callback changed, void* user)
{
    return guarded([&] {
        refuseInsideCallback();
        const auto owned = find<OwnedScalar>(metric);
        if (!accept)
            return require(owned->clearRangeHandler(), VIGIL_CHECK_ENDED);
        vigil::ScalarHandle::Changed changedFunction;
        if (changed) {
            changedFunction = [=](RangeKind kind, const Range& range) {
                const vigil_range given = fromRange(range);
                changed(user, static_cast<int>(kind), &given);
            };
        }
        const auto acceptFunction = [=](RangeKind kind, const Range& range) {
            const vigil_range given = fromRange(range);
            return accept(user, static_cast<int>(kind), &given) != 0;
        };
        require(owned->setRangeHandler(acceptFunction, std::move(changedFunction)), VIGIL_CHECK_ENDED);
    });
}

// --- Simple metrics

vigil_code vigil_simple_set(vigil_metric* metric, vigil_health status, const char* info)
{
    return guarded([&] {
        const std::string given = text(info);
        require(status >= VIGIL_HEALTH_OK && status <= VIGIL_HEALTH_UNKNOWN, VIGIL_BAD_VALUE);
        set<OwnedSimple>(metric, [&](SimpleMetric& used) {
            used.setInfo(given);
            used.setStatus(static_cast<HealthStatus>(status));
        });
    });
}

vigil_code vigil_simple_status(vigil_metric* metric, vigil_health* status)
{
    return guarded([&] {
        output(status);
        const auto statusOf = [](SimpleMetric& used) { return used.getStatus(); };
        *status = static_cast<vigil_health>(find<OwnedSimple>(metric)->get(statusOf));
    });
}

vigil_code vigil_simple_set_template(vigil_metric* metric, const char* given)
{
    return guarded([&] {
        const std::string pattern = text(given);
        set<OwnedSimple>(metric, [&](SimpleMetric& used) { used.setTemplate(pattern); });
    });
}
