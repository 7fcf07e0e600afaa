// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Threads do anything with any handle of the C interface: live, freed, of another kind. Callbacks do the
// same, while a manager triggers them and the connection is lost and made. The sanitizers judge the memory
// and the locks.

#include <vigil/testing/FakeService.h>
#include <vigil/vigil_c.h>

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/Deadline.h"
#include "support/LibraryLog.h"
#include "support/Load.h"

using testing::AnyOf;
using vigil::test::SetResult;

namespace {

class CInterfaceStress : public testing::Test
{
protected:
    using Engine = std::mt19937;

    static constexpr unsigned int threads = 4;
    static constexpr const char* firstKey = "stress";

    void freeAll()
    {
        for (const auto& metric : metrics)
            vigil_metric_free(metric);
        for (const auto& check : checks)
            vigil_check_free(check);
        vigil_watch_free(watch);
    }

    static std::size_t roll(Engine& engine, std::size_t limit) { return engine() % limit; }

    /// One random call.
    void act(Engine& engine)
    {
        const auto code = roll(engine, 2) == 0 ? change(engine) : use(engine);
        EXPECT_THAT(code, AnyOf(VIGIL_OK, VIGIL_NULL, VIGIL_BAD_HANDLE, VIGIL_TAKEN, VIGIL_IN_CALLBACK,
                                VIGIL_CHECK_ENDED));
    }

    /// A manager's SET. False if its row is gone before the application replies.
    bool manage(Engine& engine)
    {
        const std::string key = std::to_string(roll(engine, checks.size()));
        const std::string metric = std::to_string(roll(engine, metrics.size()));
        const int function = static_cast<int>(roll(engine, 5)) + 1;
        const SetResult result = roll(engine, 3) == 0 ? service.setWarningRange(firstKey, key, metric, "1:5")
                                                      : service.triggerFunction(firstKey, key, function);
        return result == SetResult::Accepted || result == SetResult::Refused;
    }

    support::LibraryLog log;
    vigil::test::FakeService service;
    std::array<std::atomic<vigil_check*>, 3> checks{};
    std::array<std::atomic<vigil_metric*>, 6> metrics{};
    std::atomic<vigil_watch*> watch{nullptr};

private:
    static void actInCallback(void* user)
    {
        static Engine engine(7); // callbacks run one at a time
        static_cast<CInterfaceStress*>(user)->act(engine);
    }
    static void onFunction(void* user, int) { actInCallback(user); }
    static void onConnection(void* user, int) { actInCallback(user); }
    static void onChanged(void* user, int, const vigil_range*) { actInCallback(user); }
    static int onAccept(void* user, int, const vigil_range*)
    {
        actInCallback(user);
        return 1;
    }

    template <typename Handle, typename Create>
    static vigil_code create(std::atomic<Handle*>& place, Create create)
    {
        Handle* handle = nullptr;
        const vigil_code code = create(&handle);
        if (code == VIGIL_OK)
            place = handle; // one that was there stays until the end of the process, or of its check
        return code;
    }

    vigil_code change(Engine& engine)
    {
        const std::size_t check = roll(engine, checks.size());
        const std::size_t metric = roll(engine, metrics.size());
        const std::string key = std::to_string(check);
        const std::string name = std::to_string(metric);
        switch (roll(engine, 12)) {
        case 0:
        case 1:
            return create(checks[check],
                          [&](auto* out) { return vigil_check_create(firstKey, key.c_str(), out); });
        case 2:
        case 3:
            return create(metrics[metric],
                          [&](auto* out) { return vigil_scalar_create(checks[check], name.c_str(), out); });
        case 4:
            return create(metrics[metric],
                          [&](auto* out) { return vigil_simple_create(checks[check], name.c_str(), out); });
        case 5:
            return create(watch, [&](auto* out) { return vigil_watch_create(onConnection, this, out); });
        case 6:
            return vigil_watch_free(watch);
        case 7:
            return vigil_metric_free(metrics[metric]);
        case 8:
            return roll(engine, 10) == 0 ? vigil_check_free(checks[check]) : VIGIL_OK;
        case 9:
            return vigil_scalar_set_range_handler(metrics[metric], onAccept, onChanged, this);
        case 10:
            return vigil_check_free(reinterpret_cast<vigil_check*>(metrics[metric].load()));
        default:
            return vigil_check_set_function(checks[check], onFunction, this);
        }
    }

    vigil_code use(Engine& engine)
    {
        vigil_check* const check = checks[roll(engine, checks.size())];
        vigil_metric* const metric = metrics[roll(engine, metrics.size())];
        vigil_range range = {VIGIL_RANGE_NORMAL, 1, 2};
        std::size_t size = 0;
        switch (roll(engine, 9)) {
        case 0:
            return vigil_scalar_set_range(metric, VIGIL_WARNING_RANGE, &range);
        case 1:
            return vigil_scalar_range(metric, VIGIL_CRITICAL_RANGE, &range);
        case 2:
            return vigil_scalar_set_unknown(metric, "no sensor");
        case 3:
            return vigil_scalar_set_value(metric, 3);
        case 4:
            return vigil_simple_set(metric, VIGIL_HEALTH_WARNING, "slow");
        case 5:
            return vigil_check_summary(check, nullptr, &size);
        case 6:
            return vigil_metric_name(metric, nullptr, &size);
        case 7:
            return vigil_check_results(
                check, [](void*, const char*, vigil_health, const char*) {}, nullptr);
        default:
            return vigil_check_update(check);
        }
    }
};

TEST_F(CInterfaceStress, AnyThreadMayDoAnythingWithAnyHandle)
{
    vigil_check* first = nullptr;
    EXPECT_EQ(vigil_check_create(firstKey, "0", &first), VIGIL_OK);
    checks[0] = first;
    EXPECT_TRUE(service.waitForConnection());
    service.setTimeout(std::chrono::milliseconds(20)); // rows go while a manager waits for a reply
    const int sets = support::isFullLoad() ? 5'000 : 100;
    std::atomic<bool> isOver{false};
    std::vector<std::thread> all;
    for (unsigned int seed = 1; seed <= threads; ++seed) {
        all.emplace_back([this, &isOver, seed] {
            Engine engine(seed);
            while (!isOver)
                act(engine);
        });
    }
    Engine engine(threads + 1);
    for (int set = 0; set < sets;) {
        if (manage(engine) && ++set % 60 == 0)
            service.breakConnections(); // the library takes seconds to connect again
    }
    isOver = true;
    for (std::thread& thread : all)
        thread.join();
    freeAll();
    service.setTimeout(std::chrono::milliseconds(support::deadlineMs));
    EXPECT_TRUE(service.waitForDisconnection());
}

} // namespace
