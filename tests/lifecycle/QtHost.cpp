// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A host with a QCoreApplication. Its first argument says when it uses the library; it prints "leaving"
// before it ends.

#include <vigil/vigil.h>

#include <QCoreApplication>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <thread>

#include "lifecycle/HostSteps.h"

using host::sayLeaving;

namespace {

vigil::HealthCheck* makeCheck()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    check->createScalarMetric("metric");
    check->update();
    return check;
}

/// True if the application's loop still delivers events.
bool runsItsOwnLoop(QCoreApplication& application)
{
    int ticks = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        if (++ticks == 5)
            application.exit(7);
    });
    timer.start(1);
    return application.exec() == 7 && ticks == 5;
}

int ownLoopRunsOn(int& argc, char** argv)
{
    QCoreApplication application(argc, argv);
    vigil::HealthCheck* first = makeCheck();
    const bool runsBeside = runsItsOwnLoop(application);
    first->destroy();
    const bool runsAfter = runsItsOwnLoop(application);
    makeCheck()->destroy();
    const bool runsAfterAnother = runsItsOwnLoop(application);
    sayLeaving();
    return runsBeside && runsAfter && runsAfterAnother && QCoreApplication::instance() == &application ? 0
                                                                                                       : 1;
}

int applicationAfterTheLibrary(int& argc, char** argv)
{
    makeCheck()->destroy();
    if (QCoreApplication::instance())
        return 2;
    QCoreApplication application(argc, argv);
    const bool runs = runsItsOwnLoop(application);
    makeCheck()->destroy();
    const bool runsAfter = runsItsOwnLoop(application);
    sayLeaving();
    return runs && runsAfter ? 0 : 1;
}

/// The test sends a line once it has seen what was published.
void leaveWhenTold()
{
    std::string line;
    std::cout << "published" << std::endl;
    std::getline(std::cin, line);
    sayLeaving();
}

/// The check outlives the application object, publishes, and is destroyed.
int applicationBeforeItsChecks(int& argc, char** argv)
{
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    vigil::HealthCheck* check = makeCheck();
    vigil::ScalarMetric* late = check->createScalarMetric("late");
    application.reset();
    late->setUnit(" published after the application object");
    check->update();
    leaveWhenTold();
    check->destroy();
    return QCoreApplication::instance() ? 1 : 0;
}

/// The host creates its application object beside a living check, and keeps it in use afterwards.
int applicationBesideACheck(int& argc, char** argv)
{
    vigil::HealthCheck* check = makeCheck();
    QCoreApplication application(argc, argv);
    const bool runsBeforeAnyCall = runsItsOwnLoop(application);
    vigil::ScalarMetric* late = check->createScalarMetric("late");
    late->setUnit(" published beside the application object");
    const bool runsBeside = runsItsOwnLoop(application);
    leaveWhenTold();
    check->destroy();
    const bool runsAfter = runsItsOwnLoop(application);
    makeCheck()->destroy();
    return runsBeforeAnyCall && runsBeside && runsAfter && QCoreApplication::instance() == &application ? 0
                                                                                                        : 1;
}

/// Such an object lives and dies while the check lives; noticed in time or not.
int applicationWithinACheck(int& argc, char** argv)
{
    vigil::HealthCheck* check = makeCheck();
    for (const bool isUsed : {true, false, true}) {
        const QCoreApplication application(argc, argv);
        if (isUsed)
            check->update();
    }
    vigil::ScalarMetric* late = check->createScalarMetric("late");
    late->setUnit(" published after the application object");
    leaveWhenTold();
    check->destroy();
    return QCoreApplication::instance() ? 1 : 0;
}

/// Other threads publish and end a check while the host creates and destroys its object.
int applicationsBesideUpdates(int& argc, char** argv)
{
    constexpr int rounds = 50;
    std::atomic<bool> isOver{false};
    vigil::HealthCheck* check = makeCheck();
    std::thread other([&] {
        while (!isOver) {
            check->update();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    for (int round = 0; round < rounds; ++round) {
        const QCoreApplication application(argc, argv);
        std::this_thread::sleep_for(std::chrono::milliseconds(round % 3));
    }
    isOver = true;
    other.join();
    sayLeaving();
    check->destroy();
    return QCoreApplication::instance() ? 1 : 0;
}

std::atomic<int> warnings{0};

void countWarnings(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtDebugMsg)
        return;
    ++warnings;
    std::cout << text.toStdString() << std::endl;
}

/// Several lives of the library, begun and ended by several threads, without an application object.
int livesWithoutAnApplication(int&, char**)
{
    qInstallMessageHandler(&countWarnings);
    for (int life = 0; life < 3; ++life)
        makeCheck()->destroy();
    for (int life = 0; life < 3; ++life) {
        vigil::HealthCheck* check = nullptr;
        std::thread([&] { check = makeCheck(); }).join();
        std::thread([&] { check->destroy(); }).join();
    }
    sayLeaving();
    return warnings;
}

/// Many values are pending when the application object is destroyed.
int applicationGoneWhilePublishing(int& argc, char** argv)
{
    constexpr unsigned int valueCount = 2000;
    const vigil::Oid root = vigil::Oid::fromStdString("1.3.6.1.4.1.32473.5");
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    vigil::VigilSnmpInterface& library = vigil::VigilSnmpInterface::instance();
    library.init("host");
    for (unsigned int i = 0; i < valueCount; ++i)
        library.sendValue(root + i, "value " + std::to_string(i) + ";", 0);
    application.reset();
    std::string line;
    std::getline(std::cin, line);
    sayLeaving();
    library.cleanup();
    return 0;
}

/// The last check and the application object end at the same time, in any order.
int applicationBesideItsChecks(int& argc, char** argv)
{
    constexpr int rounds = 20;
    for (int round = 0; round < rounds; ++round) {
        auto application = std::make_unique<QCoreApplication>(argc, argv);
        vigil::HealthCheck* check = makeCheck();
        std::thread other([check] { check->destroy(); });
        application.reset();
        other.join();
        if (QCoreApplication::instance())
            return 1;
    }
    sayLeaving();
    return 0;
}

int applicationGoneAtExit(int& argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    makeCheck();
    sayLeaving();
    return 0;
}

int quitsWhileACheckLives(int& argc, char** argv)
{
    QCoreApplication application(argc, argv);
    vigil::HealthCheck* check = makeCheck();
    QTimer::singleShot(1, &application, &QCoreApplication::quit);
    application.exec();
    check->update();
    sayLeaving();
    check->destroy();
    return 0;
}

int checkInAnotherThread(int& argc, char** argv)
{
    QCoreApplication application(argc, argv);
    vigil::HealthCheck* check = nullptr;
    std::thread([&] { check = makeCheck(); }).join();
    const bool runs = runsItsOwnLoop(application);
    sayLeaving();
    std::thread([&] { check->destroy(); }).join();
    return runs ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    static const std::map<std::string, std::function<int(int&, char**)>> ways = {
        {"own-loop", ownLoopRunsOn},
        {"application-after", applicationAfterTheLibrary},
        {"application-before-checks", applicationBeforeItsChecks},
        {"application-beside-check", applicationBesideACheck},
        {"application-within-check", applicationWithinACheck},
        {"applications-beside-updates", applicationsBesideUpdates},
        {"application-beside-checks", applicationBesideItsChecks},
        {"application-gone-while-publishing", applicationGoneWhilePublishing},
        {"application-gone-at-exit", applicationGoneAtExit},
        {"quit-with-live-check", quitsWhileACheckLives},
        {"check-in-thread", checkInAnotherThread},
        {"lives-without-application", livesWithoutAnApplication},
    };
    return ways.at(argv[1])(argc, argv);
}
