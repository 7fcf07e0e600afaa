// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The functions of <vigil/vigil_c.h> about checks and the connection.

#include <vigil/CheckHandle.h>
#include <vigil/ConnectionWatch.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "c/Support.h"
#include "c/TakenKeys.h"

using c::find;
using c::guarded;
using c::output;
using c::refuseInsideCallback;
using c::text;
using vigil::HealthCheck;
using vigil::detail::OwnedCheck;
using vigil::detail::OwnedWatch;

namespace {

/// A check that holds its keys until its rows are withdrawn.
class CheckWithKeys : public OwnedCheck
{
public:
    explicit CheckWithKeys(const c::Keys& keys) : OwnedCheck(keys.first, keys.second), m_keys(keys) {}

private:
    bool end() noexcept override
    {
        const bool isEnded = OwnedCheck::end();
        c::TakenKeys::instance().release(m_keys);
        return isEnded;
    }

    const c::Keys m_keys;
};

std::shared_ptr<CheckWithKeys> createCheck(const c::Keys& keys)
{
    c::require(c::TakenKeys::instance().take(keys), VIGIL_TAKEN);
    try {
        return std::make_shared<CheckWithKeys>(keys);
    } catch (...) {
        c::TakenKeys::instance().release(keys);
        throw;
    }
}

/// The result of operation(check), of a check that may be freed by another thread meanwhile.
template <typename Operation>
void use(vigil_check* handle, Operation operation)
{
    const bool isUsed = find<OwnedCheck>(handle)->use([&](HealthCheck& check) {
        operation(check);
        return true;
    });
    c::require(isUsed, VIGIL_BAD_HANDLE);
}

} // namespace

vigil_code vigil_check_create(const char* first_key, const char* second_key, vigil_check** check)
{
    return guarded([&] {
        refuseInsideCallback();
        output(check);
        c::handOut(createCheck({text(first_key), text(second_key)}), check);
    });
}

vigil_code vigil_check_free(vigil_check* check)
{
    return guarded([&] { c::release<OwnedCheck>(check); });
}

vigil_code vigil_check_set_description(vigil_check* check, const char* description)
{
    return guarded([&] {
        const std::string given = text(description);
        use(check, [&](HealthCheck& used) { used.setDescription(given); });
    });
}

vigil_code vigil_check_update(vigil_check* check)
{
    return guarded([&] { use(check, [](HealthCheck& used) { used.update(); }); });
}

vigil_code vigil_check_status(vigil_check* check, vigil_health* status)
{
    return guarded([&] {
        output(status);
        use(check, [&](HealthCheck& used) { *status = static_cast<vigil_health>(used.getStatus()); });
    });
}

vigil_code vigil_check_summary(vigil_check* check, char* buffer, size_t* size)
{
    return guarded([&] {
        std::string summary;
        use(check, [&](HealthCheck& used) { summary = used.getSummary(); });
        c::writeText(summary, buffer, size);
    });
}

vigil_code vigil_check_results(vigil_check* check, vigil_result_callback result, void* user)
{
    return guarded([&] {
        c::require(result != nullptr, VIGIL_NULL);
        std::vector<vigil::Result> results;
        use(check, [&](HealthCheck& used) { used.getResults(results); });
        try {
            for (const vigil::Result& each : results)
                result(user, each.getName().c_str(), static_cast<vigil_health>(each.getStatus()),
                       each.getSummary().c_str());
        } catch (...) { // of the callback, so it says nothing about the handle
            throw c::Failure{VIGIL_INTERNAL};
        }
    });
}

vigil_code vigil_check_set_function(vigil_check* check, vigil_function_callback function, void* user)
{
    return guarded([&] {
        refuseInsideCallback();
        vigil::detail::ManagementFunctions functions;
        for (std::size_t index = 0; function && index < functions.size(); ++index) {
            const int number = static_cast<int>(index) + 1;
            functions[index] = std::make_shared<const std::function<void()>>([=] { function(user, number); });
        }
        find<OwnedCheck>(check)->setFunctions(std::move(functions));
    });
}

vigil_code vigil_watch_create(vigil_connection_callback changed, void* user, vigil_watch** watch)
{
    return guarded([&] {
        refuseInsideCallback();
        output(watch);
        c::require(changed != nullptr, VIGIL_NULL);
        const auto owned =
            std::make_shared<OwnedWatch>([=](bool isConnected) { changed(user, isConnected ? 1 : 0); });
        owned->begin();
        c::handOut(owned, watch);
    });
}

vigil_code vigil_watch_free(vigil_watch* watch)
{
    return guarded([&] { c::release<OwnedWatch>(watch); });
}
