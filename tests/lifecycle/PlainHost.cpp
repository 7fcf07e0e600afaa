// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A host without Qt. Its first argument says how it ends; it prints "leaving" first.

#include <vigil/raii.h>
#include <vigil/vigil.h>
#include <vigil/vigil_c.h>

#include <atomic>
#include <chrono>
#include <clocale>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "lifecycle/HostSteps.h"

using host::sayLeaving;

namespace {

vigil::HealthCheck* makeCheck(int metrics = 3)
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    for (int i = 0; i < metrics; ++i)
        check->createScalarMetric("metric" + std::to_string(i));
    check->update();
    return check;
}

/// Waits until the connection is lost and made again. The loss may last a moment only.
class ReconnectWatch : public vigil::StateInfoCallback
{
public:
    ReconnectWatch() { vigil::VigilSnmpInterface::instance().registerStateInfoCallback(this); }

    void callbackStateInfo(int state) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_wasLost = m_wasLost || state == 1;
        m_isBack = m_wasLost && state == 0;
        m_changed.notify_all();
    }

    void wait()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [&] { return m_isBack; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_wasLost = false;
    bool m_isBack = false;
};

/// Runs a function on the client thread when the connection is lost.
class OnLoss : public vigil::StateInfoCallback
{
public:
    explicit OnLoss(std::function<void()> action) : m_action(std::move(action)) {}

    void callbackStateInfo(int state) override
    {
        if (state == 1)
            m_action();
    }

private:
    const std::function<void()> m_action;
};

/// Registers first; the values published next make the service hang up.
void provokeLoss(OnLoss& callback)
{
    vigil::VigilSnmpInterface& facade = vigil::VigilSnmpInterface::instance();
    facade.init("host");
    facade.registerStateInfoCallback(&callback);
    facade.sendValue(vigil::Oid::fromStdString("1.3.6.1.4.1.32473.9"), 1, 0);
}

[[noreturn]] void sleepForEver()
{
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

/// A static of the application, destroyed after the library's exit handler has run.
struct LateOwner
{
    vigil::HealthCheck* check = nullptr;
    vigil::ScalarMetric* metric = nullptr;
    ~LateOwner()
    {
        if (!check)
            return;
        metric->setUnit("late");
        check->update();
        metric->remove();
        check->destroy();
        vigil::createHealthCheck("too", "late")->destroy();
    }
};

LateOwner lateOwner;

/// The same with handles and a timer.
struct LateHandles
{
    vigil::CheckHandle check;
    vigil::ScalarHandle metric;
    std::unique_ptr<vigil::Updater> updater;
    ~LateHandles()
    {
        if (!updater)
            return;
        metric.setUnit("late");
        check.update();
        updater->updateNow();
        vigil::CheckHandle("too", "late").update();
    }
};

LateHandles lateHandles;

/// The same in C.
struct LateCHandles
{
    vigil_check* check = nullptr;
    vigil_metric* metric = nullptr;
    ~LateCHandles()
    {
        if (!check)
            return;
        vigil_scalar_set_value(metric, 1);
        vigil_check_update(check);
        vigil_metric_free(metric);
        vigil_check_free(check);
    }
};

LateCHandles lateCHandles;

int returnWithLiveChecks()
{
    makeCheck();
    sayLeaving();
    return 0;
}

int exitWithLiveChecks()
{
    makeCheck();
    sayLeaving();
    std::exit(0);
}

int exitInAnotherThread()
{
    makeCheck();
    std::thread([] {
        sayLeaving();
        std::exit(0);
    }).detach();
    sleepForEver();
}

int exitInTheThreadThatStartedTheLibrary()
{
    std::thread([] {
        makeCheck();
        sayLeaving();
        std::exit(0);
    }).detach();
    sleepForEver();
}

int exitInsideACallback()
{
    static OnLoss leave([] {
        sayLeaving();
        std::exit(0);
    });
    provokeLoss(leave);
    sleepForEver();
}

int exitWhileACallbackHangs()
{
    static std::atomic<bool> isHanging{false};
    static OnLoss hang([] {
        isHanging = true;
        sleepForEver();
    });
    provokeLoss(hang);
    while (!isHanging)
        std::this_thread::yield();
    sayLeaving();
    return 0;
}

void publishMany()
{
    const vigil::Oid base = vigil::Oid::fromStdString("1.3.6.1.4.1.32473.9");
    for (unsigned int i = 0; i < 50000; ++i)
        vigil::VigilSnmpInterface::instance().sendValue(base + i, std::string(100, 'x'), 0);
}

int exitWithALongQueue()
{
    vigil::VigilSnmpInterface::instance().init("host");
    publishMany();
    sayLeaving();
    return 0;
}

/// The service hangs up once. The next connection starts with the replay.
int exitDuringAReplay()
{
    vigil::VigilSnmpInterface::instance().init("host");
    static auto* const watch = new ReconnectWatch; // never destroyed: it stays registered
    publishMany();
    watch->wait();
    sayLeaving();
    return 0;
}

/// Each thread has a check of its own and goes on while the process ends.
int exitBesideBusyThreads()
{
    static std::atomic<int> running{0};
    for (int number = 0; number < 4; ++number) {
        std::thread([number] {
            for (int round = 0;; ++round) {
                vigil::HealthCheck* check = vigil::createHealthCheck("host", std::to_string(number));
                vigil::ScalarMetric* metric = check->createScalarMetric("metric");
                for (int i = 0; i < 20; ++i)
                    check->update();
                metric->remove();
                check->destroy();
                if (round == 0)
                    ++running;
            }
        }).detach();
    }
    while (running < 4)
        std::this_thread::yield();
    sayLeaving();
    return 0;
}

int destroyInAStaticDestructor()
{
    lateOwner.check = vigil::createHealthCheck("host", "late");
    lateOwner.metric = lateOwner.check->createScalarMetric("metric");
    sayLeaving();
    return 0;
}

int endHandlesInAStaticDestructor()
{
    lateHandles.check = vigil::CheckHandle("host", "late");
    lateHandles.metric = vigil::ScalarHandle(lateHandles.check, "metric");
    lateHandles.updater = std::make_unique<vigil::Updater>(std::chrono::hours(1));
    lateHandles.updater->add(lateHandles.metric, [] { return 1; });
    lateHandles.updater->start();
    sayLeaving();
    return 0;
}

int freeInAStaticDestructor()
{
    vigil_check_create("host", "late", &lateCHandles.check);
    vigil_scalar_create(lateCHandles.check, "metric", &lateCHandles.metric);
    sayLeaving();
    return lateCHandles.metric ? 0 : 1;
}

int destroyAtOnceManyTimes()
{
    for (int i = 0; i < 30; ++i)
        vigil::createHealthCheck("host", "short")->destroy();
    sayLeaving();
    return 0;
}

/// Keeps the client thread busy at each connect.
class SlowCallback : public vigil::StateInfoCallback
{
public:
    void callbackStateInfo(int) override { std::this_thread::sleep_for(std::chrono::seconds(1)); }
};

/// Destroys its check during the first connect, with more to send than the service reads in time.
int destroyWithMuchToDo()
{
    vigil::HealthCheck* check = makeCheck();
    SlowCallback callback;
    vigil::VigilSnmpInterface& facade = vigil::VigilSnmpInterface::instance();
    facade.registerStateInfoCallback(&callback);
    const vigil::Oid base = vigil::Oid::fromStdString("1.3.6.1.4.1.32473.9");
    for (unsigned int i = 0; i < 300; ++i)
        facade.sendValue(base + i, std::string(100000, 'x'), 0);
    std::cout << "leaving" << std::endl; // without a wait: the first connect must not be over
    check->destroy();
    return 0;
}

int keepTheLocale()
{
    makeCheck()->destroy();
    const bool isKept = std::string(std::setlocale(LC_ALL, nullptr)) == "C";
    sayLeaving();
    return isKept ? 0 : 1;
}

int destroyInOrder()
{
    vigil::HealthCheck* check = makeCheck();
    std::string line;
    std::cout << "ready" << std::endl;
    std::getline(std::cin, line);
    sayLeaving();
    check->destroy();
    std::cout << "destroyed" << std::endl;
    return 0;
}

} // namespace

int main(int, char** arguments)
{
    static const std::map<std::string, std::function<int()>> ways = {
        {"return", returnWithLiveChecks},
        {"exit", exitWithLiveChecks},
        {"exit-in-thread", exitInAnotherThread},
        {"exit-in-starting-thread", exitInTheThreadThatStartedTheLibrary},
        {"exit-in-callback", exitInsideACallback},
        {"exit-while-callback-hangs", exitWhileACallbackHangs},
        {"exit-with-long-queue", exitWithALongQueue},
        {"exit-during-replay", exitDuringAReplay},
        {"exit-beside-busy-threads", exitBesideBusyThreads},
        {"static-destructor", destroyInAStaticDestructor},
        {"static-destructor-of-handles", endHandlesInAStaticDestructor},
        {"static-destructor-in-c", freeInAStaticDestructor},
        {"destroy-at-once", destroyAtOnceManyTimes},
        {"destroy-with-much-to-do", destroyWithMuchToDo},
        {"keep-locale", keepTheLocale},
        {"destroy", destroyInOrder},
    };
    return ways.at(arguments[1])();
}
