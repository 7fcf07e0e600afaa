// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A host that uses the library at odd moments. Its first argument says which; it prints "leaving" when its
// last thread begins to end.

#include <vigil/vigil.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cfenv>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <iostream>
#include <limits>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "lifecycle/HostSteps.h"

namespace {

vigil::VigilSnmpInterface& snmp()
{
    return vigil::VigilSnmpInterface::instance();
}

void useLibrary()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "odd");
    if (!check)
        return;
    vigil::ScalarMetric* metric = check->createScalarMetric("metric");
    check->update();
    snmp().sendValue(vigil::Oid::fromStdString("1.3.6.1.4.1.32473.9.1"), 1, 0);
    if (metric) // null inside a callback
        metric->remove();
    check->destroy();
}

/// Uses the library when its thread, or the process, ends.
struct UseAtEnd
{
    bool isArmed = false;
    void arm() { isArmed = true; }
    ~UseAtEnd()
    {
        if (isArmed)
            useLibrary();
    }
};

thread_local UseAtEnd ofThread;
UseAtEnd ofProcess;

/// Runs a function on the client thread when the service hangs up, and waits for its end.
class OnLoss : public vigil::StateInfoCallback
{
public:
    explicit OnLoss(std::function<void()> action) : m_action(std::move(action))
    {
        snmp().init("host");
        snmp().registerStateInfoCallback(this);
        snmp().sendValue(vigil::Oid::fromStdString("1.3.6.1.4.1.32473.9"), 1, 0); // the service hangs up
        m_done.get_future().wait();
        snmp().deregisterStateInfoCallback(this);
    }

    void callbackStateInfo(int state) override
    {
        if (state == 0 || m_hasRun)
            return;
        m_hasRun = true;
        const Finish finish{m_done};
        m_action();
    }

private:
    struct Finish
    {
        std::promise<void>& done;
        ~Finish() { done.set_value(); }
    };

    const std::function<void()> m_action;
    bool m_hasRun = false;
    std::promise<void> m_done;
};

int inAThreadsDestructor()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    for (int i = 0; i < 20; ++i)
        std::thread([] { ofThread.arm(); }).join();
    std::cout << "leaving" << std::endl;
    check->destroy();
    return 0;
}

int inTheMainThreadsDestructor()
{
    ofThread.arm();
    vigil::createHealthCheck("host", "check")->update();
    std::cout << "leaving" << std::endl;
    return 0;
}

int firstInAStaticDestructor()
{
    ofProcess.arm();
    std::cout << "leaving" << std::endl;
    return 0;
}

int inAThreadThatOutlivesMain()
{
    vigil::createHealthCheck("host", "check")->update();
    std::thread([] {
        for (;;)
            useLibrary();
    }).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    std::cout << "leaving" << std::endl;
    return 0;
}

int cleanupBesideChecks()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    vigil::ScalarMetric* metric = check->createScalarMetric("metric");
    snmp().cleanup();
    check->update();
    useLibrary();
    snmp().init("again");
    check->update();
    useLibrary();
    metric->setUnit("late");
    check->registerManagementHandler(nullptr);
    check->unregisterManagementHandler();
    check->unregisterManagementHandler();
    metric->clearRangeChangeHandler();
    snmp().cleanup();
    snmp().cleanup();
    check->destroy();
    metric->setWarningRange(vigil::Range::CreateThresholdAbove(1));
    metric->setRangeChangeHandler(nullptr);
    metric->clearRangeChangeHandler();
    std::cout << "leaving" << std::endl;
    metric->remove();
    return 0;
}

int oddTexts()
{
    const std::string texts[] = {"", std::string("a\0b", 3), "\xff\xfe", std::string(2000, 'k'),
                                 "{name}{value}"};
    for (const std::string& text : texts) {
        vigil::HealthCheck* check = vigil::createHealthCheck(text, text);
        vigil::SimpleMetric* simple = check->createSimpleMetric(text);
        vigil::ScalarMetric* scalar = check->createScalarMetric(text + "2");
        check->setDescription(text);
        simple->setTemplate(text);
        simple->setInfo(text);
        scalar->setUnit(text);
        check->update();
        simple->remove();
        scalar->remove();
        check->destroy();
    }
    std::cout << "leaving" << std::endl;
    return 0;
}

/// The new program is this one again.
int execute(const char* program)
{
    vigil::createHealthCheck("host", "check")->update();
    std::cout << "leaving" << std::endl;
    execl(program, program, "odd-texts", nullptr);
    return 1;
}

int forkAndExecute(const char* program)
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    check->update();
    const pid_t child = fork();
    if (child == 0) {
        execl(program, program, "odd-texts", nullptr);
        _exit(1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    std::cout << "leaving" << std::endl;
    check->destroy();
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

/// The children must not wait for a lock that a thread of their parent held.
int forkBesideStartsAndStops()
{
    constexpr unsigned int limitSeconds = 30;
    std::atomic<bool> isOver{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&isOver] {
            while (!isOver)
                useLibrary();
        });
    }
    int failures = 0;
    for (int i = 0; i < 100; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            alarm(limitSeconds);
            useLibrary();
            snmp().init("again");
            snmp().cleanup();
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        failures += status == 0 ? 0 : 1;
    }
    isOver = true;
    for (std::thread& thread : threads)
        thread.join();
    std::cout << "leaving" << std::endl;
    return failures;
}

int inTheClientThreadsDestructor()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    const OnLoss arm([] { ofThread.arm(); });
    std::cout << "leaving" << std::endl;
    check->destroy();
    return 0;
}

int everythingInACallback()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    vigil::ScalarMetric* metric = check->createScalarMetric("metric");
    const OnLoss use([&] {
        useLibrary();
        check->update();
        metric->setUnit("in a callback");
        metric->clearRangeChangeHandler();
        check->registerManagementHandler(nullptr);
        check->unregisterManagementHandler();
        metric->remove(); // refused
        check->destroy(); // refused
        snmp().init("again");
        snmp().cleanup();
    });
    check->update();
    metric->remove();
    std::cout << "leaving" << std::endl;
    check->destroy();
    return 0;
}

int throwInACallback()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    const OnLoss fail([] { throw "no std::exception"; });
    check->update();
    std::cout << "leaving" << std::endl;
    check->destroy();
    return 0;
}

int forkInACallback(const char* program)
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    int status = -1;
    const OnLoss fork([&] {
        const pid_t child = ::fork();
        if (child == 0) {
            check->update();
            execl(program, program, "exit-handler", nullptr);
            _exit(1);
        }
        waitpid(child, &status, 0);
    });
    std::cout << "leaving" << std::endl;
    check->destroy();
    return status;
}

int exitInACallbackBesideDestroy()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    static std::promise<void> isInside;
    std::thread([] {
        const OnLoss leave([] {
            isInside.set_value();
            std::this_thread::sleep_for(std::chrono::milliseconds(50)); // the other thread waits by then
            std::cout << "leaving" << std::endl;
            std::exit(0);
        });
    }).detach();
    isInside.get_future().wait();
    check->destroy();
    for (;;)
        std::this_thread::sleep_for(std::chrono::seconds(1));
}

int atQuickExit()
{
    vigil::createHealthCheck("host", "check")->update();
    std::at_quick_exit([] { useLibrary(); });
    std::cout << "leaving" << std::endl;
    std::quick_exit(0);
}

int inAnExitHandler()
{
    std::atexit([] { useLibrary(); }); // runs after the library's own
    vigil::createHealthCheck("host", "check")->update();
    std::atexit([] { useLibrary(); }); // runs before
    std::cout << "leaving" << std::endl;
    return 0;
}

/// As numerical programs do.
int trapFloatingPointErrors()
{
    feenableexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW);
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    vigil::ScalarMetric* metric = check->createScalarMetric("metric");
    for (const vigil::Range& range :
         {vigil::Range::CreateThresholdAbove(1), vigil::Range::CreateRange(notANumber, notANumber)}) {
        metric->setWarningRange(range);
        for (const double value : {notANumber, std::numeric_limits<double>::infinity(), 1e300, 1e-320}) {
            metric->setValue(value);
            check->update();
        }
    }
    vigil::Range range;
    vigil::Range::fromString("1e400:nan", range);
    std::cout << "leaving" << std::endl;
    check->destroy();
    return 0;
}

/// A handler called on the client thread inherits no traps.
int trapFloatingPointErrorsAroundACallback()
{
    feenableexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW);
    int traps = -1;
    const OnLoss ask([&] { traps = fegetexcept(); });
    std::cout << "leaving" << std::endl;
    snmp().cleanup();
    return traps;
}

bool isNullDevice(int descriptor)
{
    char target[20] = {};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    return readlink(link.c_str(), target, sizeof target - 1) > 0 && target == std::string("/dev/null");
}

void closeAllStandardDescriptors()
{
    for (int descriptor = 0; descriptor <= STDERR_FILENO; ++descriptor)
        close(descriptor);
}

bool areAllNullDevices()
{
    return isNullDevice(0) && isNullDevice(1) && isNullDevice(2);
}

/// The library's own descriptors must not get these numbers.
int closeStandardDescriptors()
{
    closeAllStandardDescriptors();
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    check->update();
    const bool isSafe = areAllNullDevices();
    check->destroy();
    return isSafe ? 0 : 1;
}

/// The next connection must not get these numbers.
int closeStandardDescriptorsBeforeAReconnect()
{
    class Connections : public vigil::StateInfoCallback
    {
    public:
        void callbackStateInfo(int state) override
        {
            if (state == 1)
                closeAllStandardDescriptors();
            else if (wasLost)
                isSafe.set_value(areAllNullDevices());
            wasLost = state == 1;
        }

        bool wasLost = false;
        std::promise<bool> isSafe;
    };
    Connections connections;
    snmp().init("host");
    snmp().registerStateInfoCallback(&connections);
    snmp().sendValue(vigil::Oid::fromStdString("1.3.6.1.4.1.32473.9"), 1, 0); // the service hangs up once
    const bool isSafe = connections.isSafe.get_future().get();
    snmp().deregisterStateInfoCallback(&connections);
    snmp().cleanup();
    return isSafe ? 0 : 1;
}

int inAThreadWithASmallStack()
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 64 * 1024);
    const auto use = [](void*) -> void* {
        useLibrary();
        return nullptr;
    };
    pthread_t thread{};
    pthread_create(&thread, &attributes, use, nullptr);
    pthread_join(thread, nullptr);
    std::cout << "leaving" << std::endl;
    return 0;
}

int inASignalStorm()
{
    struct sigaction action
    {
    };
    action.sa_handler = [](int) {}; // without SA_RESTART
    sigaction(SIGALRM, &action, nullptr);
    const itimerval often{{0, 200}, {0, 200}};
    setitimer(ITIMER_REAL, &often, nullptr);
    for (int i = 0; i < 20; ++i)
        useLibrary();
    std::cout << "leaving" << std::endl;
    return 0;
}

/// Qt, or the library, must not use select(), whose sets end at 1024.
int besideManyDescriptors()
{
    constexpr int count = 1100;
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::min<rlim_t>(2 * count, limit.rlim_max);
    setrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_cur < 2 * count)
        return host::notPossibleHere;
    for (int i = 0; i < count; ++i)
        static_cast<void>(open("/dev/null", O_RDONLY | O_CLOEXEC));
    const OnLoss wait([] {}); // the service has received something
    std::cout << "leaving" << std::endl;
    snmp().cleanup();
    return 0;
}

/// A write beyond the limit would raise a signal.
int withASmallLimitOfFileSizes()
{
    const rlimit limit{3000, 3000};
    setrlimit(RLIMIT_FSIZE, &limit);
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    for (int i = 0; i < 100; ++i)
        snmp().unsetOidTree(vigil::Oid::fromStdString("1.3.6.1.4.1.32473.9")); // writes a line of the log
    std::cout << "leaving" << std::endl;
    check->destroy();
    return 0;
}

/// Plugins may bring copies of their own.
int withTwoCopiesOfTheLibrary()
{
    Dl_info own{};
    dladdr(reinterpret_cast<void*>(&vigil::createHealthCheck), &own);
    // Beside the library: the temporary folder may permit no code.
    const std::string copyPath = std::string(own.dli_fname) + ".copy" + std::to_string(getpid());
    std::filesystem::copy_file(own.dli_fname, copyPath);
    void* copy = dlopen(copyPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    std::filesystem::remove(copyPath);
    const auto create =
        copy ? reinterpret_cast<decltype(&vigil::createHealthCheck)>(dlsym(copy, own.dli_sname)) : nullptr;
    if (!create || create == &vigil::createHealthCheck)
        return 1;
    create("host", "copy")->destroy(); // the first to use Qt
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    create("host", "copy")->destroy();
    dlclose(copy);
    check->setDescription("published after the copy was unloaded");
    check->update();
    std::cout << "leaving" << std::endl;
    check->destroy();
    return 0;
}

/// Cancels a thread at any moment of its use of the library.
void cancelUser()
{
    pthread_t thread{};
    const auto use = [](void*) -> void* {
        for (;;) {
            useLibrary();
            pthread_testcancel();
        }
        return nullptr;
    };
    pthread_create(&thread, nullptr, use, nullptr);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    pthread_cancel(thread);
    pthread_join(thread, nullptr);
}

int cancelThreads()
{
    constexpr int times = 20;
    for (int i = 0; i < times; ++i)
        cancelUser(); // starts and stops the library
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    for (int i = 0; i < times; ++i) {
        cancelUser();
        check->update();
    }
    std::cout << "leaving" << std::endl;
    check->destroy();
    return 0;
}

int cancelThreadsWithoutDebugOutput()
{
    setenv("QT_LOGGING_RULES", "vigil.*=false", 1);
    return cancelThreads();
}

/// The file mode mask forbids the user all access to new files.
int withAStrictFileModeMask()
{
    umask(0777);
    useLibrary();
    std::cout << "leaving" << std::endl;
    return 0;
}

} // namespace

int main(int, char** arguments)
{
    const std::map<std::string, std::function<int()>> ways = {
        {"thread-destructor", inAThreadsDestructor},
        {"main-thread-destructor", inTheMainThreadsDestructor},
        {"first-in-static-destructor", firstInAStaticDestructor},
        {"thread-outlives-main", inAThreadThatOutlivesMain},
        {"client-thread-destructor", inTheClientThreadsDestructor},
        {"everything-in-callback", everythingInACallback},
        {"throw-in-callback", throwInACallback},
        {"fork-in-callback", [&] { return forkInACallback(arguments[0]); }},
        {"exit-in-callback-beside-destroy", exitInACallbackBesideDestroy},
        {"cleanup-beside-checks", cleanupBesideChecks},
        {"odd-texts", oddTexts},
        {"exec", [&] { return execute(arguments[0]); }},
        {"fork-beside-starts", forkBesideStartsAndStops},
        {"fork-exec", [&] { return forkAndExecute(arguments[0]); }},
        {"quick-exit", atQuickExit},
        {"exit-handler", inAnExitHandler},
        {"floating-point-traps", trapFloatingPointErrors},
        {"floating-point-traps-around-callback", trapFloatingPointErrorsAroundACallback},
        {"closed-standard-descriptors", closeStandardDescriptors},
        {"standard-descriptors-closed-later", closeStandardDescriptorsBeforeAReconnect},
        {"small-stack", inAThreadWithASmallStack},
        {"signal-storm", inASignalStorm},
        {"many-descriptors", besideManyDescriptors},
        {"two-copies", withTwoCopiesOfTheLibrary},
        {"small-file-limit", withASmallLimitOfFileSizes},
        {"cancelled-threads", cancelThreads},
        {"cancelled-quiet-threads", cancelThreadsWithoutDebugOutput},
        {"strict-mode-mask", withAStrictFileModeMask},
    };
    return ways.at(arguments[1])();
}
