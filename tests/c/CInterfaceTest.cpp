// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/vigil_c.h>

#include <gmock/gmock.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <future>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/LibraryTest.h"
#include "support/Publications.h"
#include "support/ScriptedCallbacks.h"

using support::cell;
using support::set;
using support::unset;
using testing::Contains;
using testing::ElementsAre;

namespace {

constexpr const char* notUtf8 = "caf\xE9";

class CInterfaceTest : public support::LibraryTest
{
protected:
    CInterfaceTest()
    {
        start();
        EXPECT_EQ(vigil_check_create("app", "keeper", &keeper), VIGIL_OK);
        EXPECT_EQ(vigil_check_create("app", "hc", &check), VIGIL_OK);
        EXPECT_EQ(vigil_scalar_create(check, "cpu", &cpu), VIGIL_OK);
        EXPECT_EQ(vigil_simple_create(check, "db", &db), VIGIL_OK);
    }

    ~CInterfaceTest() override
    {
        vigil_metric_free(cpu);
        vigil_metric_free(db);
        vigil_check_free(check);
        vigil_check_free(keeper);
    }

    std::string summary() const
    {
        std::size_t size = 0;
        EXPECT_EQ(vigil_check_summary(check, nullptr, &size), VIGIL_OK);
        std::string text(size, 'x');
        EXPECT_EQ(vigil_check_summary(check, &text[0], &size), VIGIL_OK);
        text.pop_back();
        return text;
    }

    template <typename Handle>
    static Handle* invented(std::uintptr_t number)
    {
        return reinterpret_cast<Handle*>(number);
    }

    const std::string warningCell = cell(2, 3, {"app", "hc", "cpu"});

public: // for the callbacks
    support::Recorder recorder;
    vigil_check* keeper = nullptr;
    vigil_check* check = nullptr;
    vigil_metric* cpu = nullptr;
    vigil_metric* db = nullptr;
    std::promise<void> freed;
    std::promise<void> refused;
};

TEST_F(CInterfaceTest, ValuesAndTextsArriveInTheTables)
{
    const vigil_range range = {VIGIL_RANGE_NORMAL, -DBL_MAX, 80};
    EXPECT_EQ(vigil_check_set_description(check, "D"), VIGIL_OK);
    EXPECT_EQ(vigil_scalar_set_unit(cpu, "%"), VIGIL_OK);
    EXPECT_EQ(vigil_scalar_set_range(cpu, VIGIL_WARNING_RANGE, &range), VIGIL_OK);
    EXPECT_EQ(vigil_scalar_set_value(cpu, 85), VIGIL_OK);
    EXPECT_EQ(vigil_simple_set_template(db, "{name} {info}"), VIGIL_OK);
    EXPECT_EQ(vigil_simple_set(db, VIGIL_HEALTH_CRITICAL, "is down"), VIGIL_OK);
    EXPECT_EQ(vigil_metric_set_performance_data(cpu, 0), VIGIL_OK);
    EXPECT_EQ(vigil_check_update(check), VIGIL_OK);
    EXPECT_EQ(summary(), "D - out of warning range: cpu is 85%. db is down");
    EXPECT_THAT(publications(), Contains(set(cell(1, 3, {"app", "hc"}), 2)));
    vigil_health status = -1;
    EXPECT_EQ(vigil_check_status(check, &status), VIGIL_OK);
    EXPECT_EQ(status, VIGIL_HEALTH_CRITICAL);
    EXPECT_EQ(vigil_simple_status(db, &status), VIGIL_OK);
    EXPECT_EQ(status, VIGIL_HEALTH_CRITICAL);
    double value = 0;
    EXPECT_EQ(vigil_scalar_value(cpu, &value), VIGIL_OK);
    EXPECT_EQ(value, 85);
}

TEST_F(CInterfaceTest, ResultsComeOneByOne)
{
    EXPECT_EQ(vigil_scalar_set_unknown(cpu, "no sensor"), VIGIL_OK);
    EXPECT_EQ(vigil_check_update(check), VIGIL_OK);
    const auto add = [](void* user, const char* name, vigil_health status, const char* text) {
        static_cast<support::Recorder*>(user)->add(std::string(name) + ' ' + std::to_string(status) + ' ' +
                                                   text);
    };
    EXPECT_EQ(vigil_check_results(check, add, &recorder), VIGIL_OK);
    EXPECT_THAT(recorder.lines(), ElementsAre("cpu 3 cpu is UNKNOWN, no sensor.", "db 3 db is UNKNOWN, ."));
}

TEST_F(CInterfaceTest, RangesGoThereAndBack)
{
    for (const char* text : {"10", "10:20", "~:80", "@10:20", "off", "", "10:"}) {
        vigil_range range = {};
        EXPECT_EQ(vigil_range_parse(text, &range), VIGIL_OK) << text;
        EXPECT_EQ(vigil_scalar_set_range(cpu, VIGIL_CRITICAL_RANGE, &range), VIGIL_OK) << text;
        vigil_range read = {};
        EXPECT_EQ(vigil_scalar_range(cpu, VIGIL_CRITICAL_RANGE, &read), VIGIL_OK) << text;
        char buffer[20] = "";
        std::size_t size = sizeof(buffer);
        EXPECT_EQ(vigil_range_text(&read, buffer, &size), VIGIL_OK) << text;
        EXPECT_STREQ(buffer, text == std::string("10") ? "10" : text);
    }
    int accepts = -1;
    const vigil_range inverse = {VIGIL_RANGE_INVERSE, 1, 2};
    EXPECT_EQ(vigil_range_accepts(&inverse, 1.5, &accepts), VIGIL_OK);
    EXPECT_EQ(accepts, 0);
}

TEST_F(CInterfaceTest, BadTextsAndNumbersAreRefused)
{
    vigil_range range = {};
    EXPECT_EQ(vigil_range_parse("ten", &range), VIGIL_BAD_VALUE);
    EXPECT_EQ(vigil_range_parse("nan", &range), VIGIL_BAD_VALUE);
    EXPECT_EQ(vigil_range_parse("1:nan", &range), VIGIL_BAD_VALUE);
    EXPECT_EQ(vigil_scalar_set_range(cpu, 2, &range), VIGIL_BAD_VALUE);
    range.mode = 7;
    EXPECT_EQ(vigil_scalar_set_range(cpu, 0, &range), VIGIL_BAD_VALUE);
    range = {VIGIL_RANGE_NORMAL, std::nan(""), 1};
    EXPECT_EQ(vigil_scalar_set_range(cpu, 0, &range), VIGIL_BAD_VALUE);
    EXPECT_EQ(vigil_simple_set(db, 4, ""), VIGIL_BAD_VALUE);
    EXPECT_EQ(vigil_simple_set(db, -1, ""), VIGIL_BAD_VALUE);
    EXPECT_EQ(vigil_simple_set(db, 0, notUtf8), VIGIL_BAD_UTF8);
    EXPECT_EQ(vigil_scalar_set_unit(cpu, notUtf8), VIGIL_BAD_UTF8);
    vigil_metric* metric = nullptr;
    for (const char* bad :
         {notUtf8, "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82", "\x80", "\xFF"})
        EXPECT_EQ(vigil_scalar_create(check, bad, &metric), VIGIL_BAD_UTF8);
    EXPECT_EQ(metric, nullptr);
    EXPECT_EQ(vigil_scalar_create(check,
                                  "gr\xC3\xB6\xC3\x9F"
                                  "e \xF0\x9F\x98\x80",
                                  &metric),
              VIGIL_OK);
    EXPECT_EQ(vigil_metric_free(metric), VIGIL_OK);
}

TEST_F(CInterfaceTest, NullPointersAreRefused)
{
    vigil_check* other = nullptr;
    vigil_metric* metric = nullptr;
    vigil_watch* watch = nullptr;
    EXPECT_EQ(vigil_check_create(nullptr, "x", &other), VIGIL_NULL);
    EXPECT_EQ(vigil_check_create("x", nullptr, &other), VIGIL_NULL);
    EXPECT_EQ(vigil_check_create("x", "y", nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_check_update(nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_check_set_description(check, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_check_summary(check, nullptr, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_check_status(check, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_check_results(check, nullptr, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_check_set_function(nullptr, nullptr, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_scalar_create(nullptr, "x", &metric), VIGIL_NULL);
    EXPECT_EQ(vigil_scalar_create(check, nullptr, &metric), VIGIL_NULL);
    EXPECT_EQ(vigil_simple_create(check, "x", nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_scalar_set_value(nullptr, 1), VIGIL_NULL);
    EXPECT_EQ(vigil_scalar_value(cpu, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_scalar_set_unknown(cpu, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_scalar_set_range(cpu, 0, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_scalar_range(cpu, 0, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_range_parse(nullptr, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_range_text(nullptr, nullptr, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_range_accepts(nullptr, 1, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_metric_name(nullptr, nullptr, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_simple_set(db, 0, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_simple_set_template(db, nullptr), VIGIL_NULL);
    EXPECT_EQ(vigil_watch_create(nullptr, nullptr, &watch), VIGIL_NULL);
    EXPECT_EQ(vigil_check_free(nullptr), VIGIL_OK);
    EXPECT_EQ(vigil_metric_free(nullptr), VIGIL_OK);
    EXPECT_EQ(vigil_watch_free(nullptr), VIGIL_OK);
    EXPECT_STREQ(vigil_code_name(VIGIL_TAKEN), "VIGIL_TAKEN");
    EXPECT_STREQ(vigil_code_name(-1), "unknown");
    EXPECT_STREQ(vigil_code_name(12), "unknown");
}

TEST_F(CInterfaceTest, FreedInventedAndWrongHandlesAreFound)
{
    vigil_metric* gone = nullptr;
    EXPECT_EQ(vigil_scalar_create(check, "gone", &gone), VIGIL_OK);
    EXPECT_EQ(vigil_metric_free(gone), VIGIL_OK);
    EXPECT_EQ(vigil_metric_free(gone), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_scalar_set_value(gone, 1), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_check_update(invented<vigil_check>(1)), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_check_update(invented<vigil_check>(UINTPTR_MAX)), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_check_update(reinterpret_cast<vigil_check*>(cpu)), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_metric_free(reinterpret_cast<vigil_metric*>(check)), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_check_free(reinterpret_cast<vigil_check*>(cpu)), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_watch_free(reinterpret_cast<vigil_watch*>(cpu)), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_simple_set(cpu, 0, ""), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_scalar_set_value(db, 0), VIGIL_BAD_HANDLE);
}

TEST_F(CInterfaceTest, EveryFunctionFindsAHandleOfTheWrongKind)
{
    auto* const notACheck = reinterpret_cast<vigil_check*>(cpu);
    auto* const notAMetric = reinterpret_cast<vigil_metric*>(check);
    const vigil_range range = {VIGIL_RANGE_NORMAL, 1, 2};
    vigil_range readRange = {};
    vigil_metric* metric = nullptr;
    std::size_t size = 0;
    double value = 0;
    int status = 0;
    const auto ignoreResult = [](void*, const char*, vigil_health, const char*) {};
    EXPECT_EQ(vigil_check_set_description(notACheck, ""), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_check_status(notACheck, &status), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_check_summary(notACheck, nullptr, &size), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_check_results(notACheck, ignoreResult, nullptr), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_check_set_function(notACheck, nullptr, nullptr), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_scalar_create(notACheck, "x", &metric), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_simple_create(notACheck, "x", &metric), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_metric_name(notAMetric, nullptr, &size), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_metric_set_performance_data(notAMetric, 1), VIGIL_BAD_HANDLE);
    for (vigil_metric* wrong : {notAMetric, db}) {
        EXPECT_EQ(vigil_scalar_set_value(wrong, 1), VIGIL_BAD_HANDLE);
        EXPECT_EQ(vigil_scalar_value(wrong, &value), VIGIL_BAD_HANDLE);
        EXPECT_EQ(vigil_scalar_set_unknown(wrong, ""), VIGIL_BAD_HANDLE);
        EXPECT_EQ(vigil_scalar_set_unit(wrong, ""), VIGIL_BAD_HANDLE);
        EXPECT_EQ(vigil_scalar_unit(wrong, nullptr, &size), VIGIL_BAD_HANDLE);
        EXPECT_EQ(vigil_scalar_set_range(wrong, 0, &range), VIGIL_BAD_HANDLE);
        EXPECT_EQ(vigil_scalar_range(wrong, 0, &readRange), VIGIL_BAD_HANDLE);
        EXPECT_EQ(vigil_scalar_set_range_handler(wrong, nullptr, nullptr, nullptr), VIGIL_BAD_HANDLE);
    }
    for (vigil_metric* wrong : {notAMetric, cpu}) {
        EXPECT_EQ(vigil_simple_set(wrong, 0, ""), VIGIL_BAD_HANDLE);
        EXPECT_EQ(vigil_simple_status(wrong, &status), VIGIL_BAD_HANDLE);
        EXPECT_EQ(vigil_simple_set_template(wrong, ""), VIGIL_BAD_HANDLE);
    }
}

// As of a callback in C++ that throws.
TEST_F(CInterfaceTest, AnExceptionOfACallbackDoesNotLeaveTheInterface)
{
    const auto fail = [](void*, const char*, vigil_health, const char*) { throw std::invalid_argument("x"); };
    EXPECT_EQ(vigil_check_update(check), VIGIL_OK);
    EXPECT_EQ(vigil_check_results(check, fail, nullptr), VIGIL_INTERNAL);
    EXPECT_EQ(vigil_check_update(check), VIGIL_OK);
}

TEST_F(CInterfaceTest, NamesAndKeysAreTakenOnce)
{
    vigil_check* other = nullptr;
    vigil_metric* metric = nullptr;
    EXPECT_EQ(vigil_check_create("app", "hc", &other), VIGIL_TAKEN);
    EXPECT_EQ(vigil_scalar_create(check, "cpu", &metric), VIGIL_TAKEN);
    EXPECT_EQ(vigil_simple_create(check, "cpu", &metric), VIGIL_TAKEN);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(metric, nullptr);
}

TEST_F(CInterfaceTest, ATooSmallBufferIsLeftAlone)
{
    char buffer[] = "....";
    std::size_t size = 3;
    EXPECT_EQ(vigil_metric_name(cpu, buffer, &size), VIGIL_TOO_SMALL);
    EXPECT_EQ(size, 4u);
    EXPECT_STREQ(buffer, "....");
    EXPECT_EQ(vigil_metric_name(cpu, buffer, &size), VIGIL_OK);
    EXPECT_STREQ(buffer, "cpu");
    EXPECT_EQ(vigil_scalar_unit(cpu, buffer, &size), VIGIL_OK);
    EXPECT_STREQ(buffer, "");
}

TEST_F(CInterfaceTest, AMetricOfAFreedCheckOnlyWaitsToBeFreed)
{
    EXPECT_EQ(vigil_check_free(check), VIGIL_OK);
    EXPECT_EQ(vigil_check_update(check), VIGIL_BAD_HANDLE);
    EXPECT_EQ(vigil_scalar_set_value(cpu, 1), VIGIL_CHECK_ENDED);
    EXPECT_EQ(vigil_simple_set(db, 0, ""), VIGIL_CHECK_ENDED);
    const auto accept = [](void*, int, const vigil_range*) { return 1; };
    EXPECT_EQ(vigil_scalar_set_range_handler(cpu, accept, nullptr, nullptr), VIGIL_CHECK_ENDED);
    EXPECT_EQ(vigil_scalar_set_range_handler(cpu, nullptr, nullptr, nullptr), VIGIL_CHECK_ENDED);
    EXPECT_EQ(vigil_metric_free(cpu), VIGIL_OK);
}

TEST_F(CInterfaceTest, AManagersTriggersAndRangesReachTheCallbacks)
{
    const auto function = [](void* user, int number) {
        static_cast<support::Recorder*>(user)->add("function " + std::to_string(number));
    };
    const auto accept = [](void* user, int kind, const vigil_range* range) {
        static_cast<support::Recorder*>(user)->add("accept " + std::to_string(kind));
        return range->upper <= 100 ? 1 : 0;
    };
    const auto changed = [](void* user, int kind, const vigil_range* range) {
        static_cast<support::Recorder*>(user)->add("changed " + std::to_string(kind) + ' ' +
                                                   std::to_string(static_cast<int>(range->upper)));
    };
    EXPECT_EQ(vigil_check_set_function(check, function, &recorder), VIGIL_OK);
    EXPECT_EQ(vigil_scalar_set_range_handler(cpu, accept, changed, &recorder), VIGIL_OK);
    commit(cell(5, 3, {"app", "hc"}), 2);
    EXPECT_EQ(validate(warningCell, "1:200"), "answer 1 to " + set(warningCell, "1:200"));
    commit(warningCell, "1:20");
    EXPECT_THAT(recorder.lines(), ElementsAre("function 3", "accept 0", "changed 0 20"));
    EXPECT_EQ(vigil_scalar_set_range_handler(cpu, nullptr, nullptr, nullptr), VIGIL_OK);
    EXPECT_EQ(validate(warningCell, "1:20"), "answer 1 to " + set(warningCell, "1:20"));
    EXPECT_EQ(vigil_check_set_function(check, nullptr, nullptr), VIGIL_OK);
    commit(cell(5, 3, {"app", "hc"}), 2);
    EXPECT_EQ(recorder.lines().size(), 3u);
}

TEST_F(CInterfaceTest, ACallbackMayUpdateAndFreeButNotCreate)
{
    const auto function = [](void* user, int) {
        auto& test = *static_cast<CInterfaceTest*>(user);
        vigil_check* newCheck = nullptr;
        vigil_metric* newMetric = nullptr;
        vigil_watch* newWatch = nullptr;
        EXPECT_EQ(vigil_in_callback(), 1);
        EXPECT_EQ(vigil_check_create("a", "b", &newCheck), VIGIL_IN_CALLBACK);
        EXPECT_EQ(vigil_scalar_create(test.check, "x", &newMetric), VIGIL_IN_CALLBACK);
        EXPECT_EQ(vigil_simple_create(test.check, "x", &newMetric), VIGIL_IN_CALLBACK);
        EXPECT_EQ(vigil_check_set_function(test.check, nullptr, nullptr), VIGIL_IN_CALLBACK);
        EXPECT_EQ(vigil_scalar_set_range_handler(test.cpu, nullptr, nullptr, nullptr), VIGIL_IN_CALLBACK);
        EXPECT_EQ(vigil_watch_create([](void*, int) {}, nullptr, &newWatch), VIGIL_IN_CALLBACK);
        EXPECT_EQ(vigil_scalar_set_value(test.cpu, 9), VIGIL_OK);
        EXPECT_EQ(vigil_check_update(test.check), VIGIL_OK);
        EXPECT_EQ(vigil_metric_free(test.cpu), VIGIL_OK);
        EXPECT_EQ(vigil_check_free(test.check), VIGIL_OK);
        test.recorder.add("done");
    };
    EXPECT_EQ(vigil_in_callback(), 0);
    EXPECT_EQ(vigil_check_set_function(check, function, this), VIGIL_OK);
    commit(cell(5, 1, {"app", "hc"}), 2);
    EXPECT_THAT(recorder.lines(), ElementsAre("done"));
    const std::string line = unset(cell(1, 3, {"app", "hc"}));
    EXPECT_TRUE(service.waitForFrame([&](const auto& frame) { return support::describe(frame) == line; }));
}

// Else the freed check would withdraw the rows of the new one.
TEST_F(CInterfaceTest, KeysAreTakenUntilACheckFreedInACallbackHasEnded)
{
    const auto function = [](void* user, int) {
        auto& test = *static_cast<CInterfaceTest*>(user);
        EXPECT_EQ(vigil_check_free(test.check), VIGIL_OK);
        test.freed.set_value();
        test.refused.get_future().wait();
    };
    EXPECT_EQ(vigil_check_set_function(check, function, this), VIGIL_OK);
    std::thread manager([this] { commit(cell(5, 1, {"app", "hc"}), 2); });
    freed.get_future().wait();
    vigil_check* second = nullptr;
    vigil_code code = vigil_check_create("app", "hc", &second);
    EXPECT_EQ(code, VIGIL_TAKEN);
    refused.set_value();
    manager.join();
    while (code == VIGIL_TAKEN)
        code = vigil_check_create("app", "hc", &second);
    EXPECT_EQ(code, VIGIL_OK);
    EXPECT_EQ(vigil_check_update(second), VIGIL_OK);
    EXPECT_EQ(vigil_check_free(second), VIGIL_OK);
}

TEST_F(CInterfaceTest, TheConnectionIsKnownAndWatched)
{
    vigil_watch* watch = nullptr;
    const auto changed = [](void* user, int isConnected) {
        static_cast<support::Recorder*>(user)->add(std::to_string(isConnected));
    };
    EXPECT_EQ(vigil_is_connected(), 1);
    EXPECT_EQ(vigil_watch_create(changed, &recorder, &watch), VIGIL_OK);
    service.closeConnection();
    EXPECT_TRUE(service.waitForConnections(2));
    settle();
    EXPECT_THAT(recorder.lines(), ElementsAre("0", "1"));
    EXPECT_EQ(vigil_watch_free(watch), VIGIL_OK);
    EXPECT_EQ(vigil_watch_free(watch), VIGIL_BAD_HANDLE);
}

// The thread and address sanitizers judge it.
TEST_F(CInterfaceTest, ACallbackMayFreeAnObjectBeingGivenACallback)
{
    const auto free = [](void* user, int) {
        auto& test = *static_cast<CInterfaceTest*>(user);
        EXPECT_EQ(vigil_metric_free(test.cpu), VIGIL_OK);
        EXPECT_EQ(vigil_check_free(test.check), VIGIL_OK);
    };
    EXPECT_EQ(vigil_check_set_function(keeper, free, this), VIGIL_OK);
    std::thread other([&] {
        const auto ignore = [](void*, int) {};
        const auto accept = [](void*, int, const vigil_range*) { return 1; };
        while (vigil_scalar_set_range_handler(cpu, accept, nullptr, nullptr) == VIGIL_OK &&
               vigil_check_set_function(check, ignore, nullptr) == VIGIL_OK)
            continue;
    });
    commit(cell(5, 1, {"app", "keeper"}), 2);
    other.join();
}

// The thread and address sanitizers judge it.
TEST_F(CInterfaceTest, ThreadsMayFreeWhatOthersUse)
{
    for (int round = 0; round < 50; ++round) {
        vigil_check* shared = nullptr;
        vigil_metric* metric = nullptr;
        ASSERT_EQ(vigil_check_create("app", "shared", &shared), VIGIL_OK);
        ASSERT_EQ(vigil_scalar_create(shared, "m", &metric), VIGIL_OK);
        std::vector<std::thread> threads;
        threads.emplace_back([=] { vigil_scalar_set_unit(metric, "u"); });
        threads.emplace_back([=] { vigil_check_update(shared); });
        threads.emplace_back([=] {
            vigil_metric* other = nullptr;
            if (vigil_simple_create(shared, "other", &other) == VIGIL_OK)
                vigil_metric_free(other);
        });
        threads.emplace_back([=] { vigil_metric_free(metric); });
        threads.emplace_back([=] { vigil_check_free(shared); });
        for (std::thread& thread : threads)
            thread.join();
    }
}

} // namespace
