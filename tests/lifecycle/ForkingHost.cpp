// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Forks while the library runs. A child has no library threads; its calls must do nothing and return. The
// parent must still be connected. With the argument "daemon" it forks after its last check was destroyed, and
// the child starts the library. With "orphan" the parent ends and the child lives on. With "handles" the
// parent has handles, a timer and a check of the C interface.

#include <vigil/raii.h>
#include <vigil/vigil.h>
#include <vigil/vigil_c.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <utility>

namespace {

constexpr int children = 40;
constexpr unsigned int childLimitSeconds = 20;
constexpr int childResult = 3;

class Ignore : public vigil::StateInfoCallback
{
    void callbackStateInfo(int) override {}
};

/// In a child of a process whose other threads use the library at this moment.
void useEverything(vigil::HealthCheck* check, vigil::ScalarMetric* metric)
{
    vigil::VigilSnmpInterface& facade = vigil::VigilSnmpInterface::instance();
    Ignore callback;
    const vigil::Oid oid = vigil::Oid::fromStdString("1.3.6.1.4.1.32473.9");
    metric->setValue(1);
    metric->setUnit("from the child");
    metric->getWarningRange();
    check->update();
    check->createScalarMetric("of the child")->remove();
    facade.sendValue(oid, 1, 0);
    facade.unsetOidTree(oid);
    facade.registerStateInfoCallback(&callback);
    vigil::createHealthCheck("host", "of the child")->destroy();
    metric->remove();
    check->destroy();
    facade.init("child");
    facade.cleanup();
}

/// True if the child has returned from all its calls.
bool runChild(vigil::HealthCheck* check, vigil::ScalarMetric* metric)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(childLimitSeconds); // ends a child that hangs
        useEverything(check, metric);
        std::exit(childResult);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == childResult;
}

int forkBesideAThread()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    vigil::ScalarMetric* metric = check->createScalarMetric("metric");
    std::atomic<bool> isDone{false};
    std::thread publisher([&] {
        while (!isDone) {
            metric->setUnit("from the parent");
            check->update();
        }
    });
    int ended = 0;
    for (int i = 0; i < children; ++i)
        ended += runChild(check, metric) ? 1 : 0;
    isDone = true;
    publisher.join();
    check->setDescription("published after the fork");
    check->update();
    std::cout << "leaving" << std::endl;
    metric->remove();
    check->destroy();
    return ended == children ? 0 : 1;
}

/// A timer updates the check all the time, so that forks meet its locks held.
struct Handles
{
    vigil::CheckHandle check{"host", "handles"};
    vigil::ScalarHandle metric{check, "metric"};
    vigil::Updater updater{std::chrono::milliseconds(1)};
    vigil_check* checkOfC = nullptr;
    vigil_metric* metricOfC = nullptr;

    Handles()
    {
        vigil_check_create("host", "c", &checkOfC);
        vigil_scalar_create(checkOfC, "metric", &metricOfC);
        updater.add(metric, [this] {
            vigil_check_update(checkOfC);
            return 1;
        });
        updater.start();
    }
};

/// Every call returns. The functions of C say why they do nothing.
int useHandlesInTheChild(std::unique_ptr<Handles> handles)
{
    handles->metric.setValue(2);
    handles->metric.setUnit("from the child");
    handles->check.update();
    const bool isRefused = vigil_scalar_set_value(handles->metricOfC, 2) == VIGIL_FORKED &&
                           vigil_check_update(handles->checkOfC) == VIGIL_FORKED &&
                           vigil_check_free(handles->checkOfC) == VIGIL_FORKED;
    handles.reset();
    vigil::CheckHandle("host", "of the child").update();
    return isRefused ? childResult : 1;
}

int forkBesideHandles()
{
    auto handles = std::make_unique<Handles>();
    int ended = 0;
    for (int i = 0; i < children; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            alarm(childLimitSeconds);
            std::exit(useHandlesInTheChild(std::move(handles)));
        }
        int status = 0;
        waitpid(child, &status, 0);
        ended += WIFEXITED(status) && WEXITSTATUS(status) == childResult ? 1 : 0;
    }
    handles->check.setDescription("handles after the fork");
    handles->check.update();
    vigil_check_set_description(handles->checkOfC, "C after the fork");
    vigil_check_update(handles->checkOfC);
    std::cout << "leaving" << std::endl;
    vigil_check* const checkOfC = handles->checkOfC;
    handles.reset();
    vigil_check_free(checkOfC);
    return ended == children ? 0 : 1;
}

int becomeDaemon()
{
    vigil::createHealthCheck("host", "before")->destroy();
    const pid_t child = fork();
    if (child == 0) {
        vigil::HealthCheck* check = vigil::createHealthCheck("host", "daemon");
        check->setDescription("published by the daemon");
        check->update();
        check->destroy();
        std::exit(childResult);
    }
    int status = 0;
    waitpid(child, &status, 0);
    std::cout << "leaving" << std::endl;
    return WIFEXITED(status) && WEXITSTATUS(status) == childResult ? 0 : 1;
}

/// Prints the number of the child, which lives until the test ends it.
int leaveAnOrphan()
{
    constexpr unsigned int orphanLimitSeconds = 120;
    vigil::createHealthCheck("host", "check")->update();
    while (vigil_is_connected() == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const pid_t child = fork();
    if (child == 0) {
        alarm(orphanLimitSeconds);
        for (;;)
            pause();
    }
    std::cout << child << "\nleaving" << std::endl;
    _exit(0);
}

} // namespace

int main(int count, char** arguments)
{
    const std::string way = count > 1 ? arguments[1] : "";
    if (way == "daemon")
        return becomeDaemon();
    if (way == "orphan")
        return leaveAnOrphan();
    return way == "handles" ? forkBesideHandles() : forkBesideAThread();
}
