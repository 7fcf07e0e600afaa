// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A host that times its calls. With the argument "slow-callback", a callback keeps the library's thread busy.
// It prints each kind of call that took longer than the limit; exit code 1 if there is one.

#include <vigil/vigil.h>

#include <chrono>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "lifecycle/CallTimer.h"
#include "lifecycle/HostSteps.h"

namespace {

constexpr long limitMs = 100;

CallTimer timer;

vigil::VigilSnmpInterface& snmp()
{
    return vigil::VigilSnmpInterface::instance();
}

class SlowCallback : public vigil::StateInfoCallback
{
public:
    void callbackStateInfo(int) override { std::this_thread::sleep_for(std::chrono::milliseconds(500)); }
};

class Handler : public vigil::RangeChangeHandler, public vigil::ManagementHandler
{
public:
    bool acceptRangeChange(vigil::ScalarMetric*, RangeKind, const vigil::Range&) override { return true; }
    void rangeChanged(vigil::ScalarMetric*, RangeKind) override {}
    void managementFunction1() override {}
    void managementFunction2() override {}
    void managementFunction3() override {}
    void managementFunction4() override {}
    void managementFunction5(const std::string&) override {}
};

SlowCallback slowCallback;
Handler handler;

std::vector<vigil::ScalarMetric*> createMetrics(vigil::HealthCheck* check, int count)
{
    std::vector<vigil::ScalarMetric*> metrics;
    for (int i = 0; i < count; ++i) {
        const std::string name = "metric" + std::to_string(i);
        metrics.push_back(timer.time("createScalarMetric", [&] { return check->createScalarMetric(name); }));
        timer.time("setUnit", [&] { metrics.back()->setUnit(" s"); });
        timer.time("setWarningRange", [&] { //
            metrics.back()->setWarningRange(vigil::Range::CreateThresholdAbove(i));
        });
    }
    return metrics;
}

void update(vigil::HealthCheck* check, const std::vector<vigil::ScalarMetric*>& metrics, int rounds)
{
    for (int round = 0; round < rounds; ++round) {
        for (vigil::ScalarMetric* metric : metrics)
            metric->setValue(round);
        timer.time("update", [&] { check->update(); });
        timer.time("getSummary", [&] { return check->getSummary(); });
    }
}

/// More than the connection takes from the library.
void publishMuch()
{
    const vigil::Oid base = vigil::Oid::fromStdString("1.3.6.1.4.1.32473.9");
    for (unsigned int i = 0; i < 300; ++i)
        timer.time("sendValue", [&] { snmp().sendValue(base + i, std::string(100000, 'x'), 0); });
    timer.time("unsetOid", [&] { snmp().unsetOid(base + 1); });
    timer.time("unsetOidTree", [&] { snmp().unsetOidTree(base); });
}

/// These wait for a callback in progress.
void useHandlers(vigil::HealthCheck* check, vigil::ScalarMetric* metric)
{
    timer.time("setRangeChangeHandler", [&] { metric->setRangeChangeHandler(&handler); });
    timer.time("registerManagementHandler", [&] { check->registerManagementHandler(&handler); });
    timer.time("clearRangeChangeHandler", [&] { metric->clearRangeChangeHandler(); });
    timer.time("unregisterManagementHandler", [&] { check->unregisterManagementHandler(); });
}

void removeAll(const std::vector<vigil::ScalarMetric*>& metrics)
{
    for (vigil::ScalarMetric* metric : metrics)
        timer.time("remove", [&] { metric->remove(); });
}

int reportSlowCalls()
{
    int result = 0;
    for (const auto& [name, ms] : timer.longest()) {
        if (ms > limitMs)
            result = 1;
        std::cout << name << ": " << ms << " ms" << std::endl;
    }
    return result;
}

} // namespace

int main(int count, char** arguments)
{
    const bool callbackIsSlow = count > 1 && arguments[1] == std::string("slow-callback");
    vigil::HealthCheck* check =
        timer.time("createHealthCheck", [] { return vigil::createHealthCheck("host", "punctual"); });
    if (callbackIsSlow)
        snmp().registerStateInfoCallback(&slowCallback);
    std::vector<vigil::ScalarMetric*> metrics = createMetrics(check, 200);
    update(check, metrics, 50);
    publishMuch();
    update(check, metrics, 50);
    vigil::HealthCheck* other =
        timer.time("createHealthCheck", [] { return vigil::createHealthCheck("host", "other"); });
    if (!callbackIsSlow) {
        useHandlers(check, metrics.front());
        removeAll(metrics);
        timer.time("destroy", [&] { other->destroy(); });
    }
    const int result = reportSlowCalls();
    host::sayLeaving();
    check->destroy(); // has a limit of its own: it waits for the service
    return result;
}
