// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A host for the ways to end a process on Windows alone. Its first argument says how; it prints "leaving"
// first.

#include <vigil/vigil.h>

#include <windows.h>

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>

#include "lifecycle/HostSteps.h"

namespace {

void makeCheck()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    check->createScalarMetric("metric");
    check->update();
    host::sayLeaving();
}

/// Hides the null pointer from the compiler.
int* volatile nowhere = nullptr;

int exitProcess()
{
    makeCheck();
    ExitProcess(0);
}

DWORD WINAPI exitThread(LPVOID)
{
    ExitProcess(0);
}

int exitProcessInAnotherThread()
{
    makeCheck();
    CloseHandle(CreateThread(nullptr, 0, &exitThread, nullptr, 0, nullptr));
    Sleep(INFINITE);
    return 1;
}

class Ignore : public vigil::StateInfoCallback
{
public:
    void callbackStateInfo(int) override {}
};

/// Takes the locks of the callback store and the log all the time, so that the system ends the thread with a
/// lock held.
int exitProcessWhileThreadsHoldLocks()
{
    makeCheck();
    for (int i = 0; i < 8; ++i) {
        std::thread([] {
            Ignore callback;
            for (;;) {
                vigil::VigilSnmpInterface::instance().registerStateInfoCallback(&callback);
                vigil::VigilSnmpInterface::instance().deregisterStateInfoCallback(&callback);
            }
        }).detach();
    }
    Sleep(200);
    ExitProcess(0);
}

int throwOutOfMain()
{
    makeCheck();
    throw std::runtime_error("nobody catches this");
}

int crash()
{
    makeCheck();
    *nowhere = 1;
    return 0;
}

} // namespace

int main(int, char** arguments)
{
    static const std::map<std::string, std::function<int()>> ways = {
        {"exit-process", exitProcess},
        {"exit-process-in-thread", exitProcessInAnotherThread},
        {"exit-process-while-locked", exitProcessWhileThreadsHoldLocks},
        {"throw", throwOutOfMain},
        {"crash", crash},
    };
    return ways.at(arguments[1])();
}
