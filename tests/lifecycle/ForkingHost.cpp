// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Forks while the library runs. A child has no library threads; its calls must do nothing and return. The
// parent must still be connected. With the argument "daemon" it forks after its last check was destroyed, and
// the child starts the library.

#include <vigil/vigil.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <thread>

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

} // namespace

int main(int count, char** arguments)
{
    return count > 1 && std::strcmp(arguments[1], "daemon") == 0 ? becomeDaemon() : forkBesideAThread();
}
