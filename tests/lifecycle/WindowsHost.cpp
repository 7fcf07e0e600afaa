// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A host for what happens on Windows alone, mostly ways to end a process. Its first argument says which; it
// prints "leaving" before it ends.

#include <vigil/vigil.h>

#include <windows.h>

#include <functional>
#include <iostream>
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

/// Publishes while this thread holds the loader's lock, as during FreeLibrary(), until the test has seen it.
int publishUnderTheLoadersLock()
{
    using LockLoader = LONG(WINAPI*)(ULONG flags, ULONG * disposition, ULONG_PTR * cookie);
    const auto lockLoader = reinterpret_cast<LockLoader>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "LdrLockLoaderLock")));
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    ULONG_PTR cookie = 0;
    if (!lockLoader || lockLoader(0, nullptr, &cookie) != 0)
        return 1;
    check->setDescription("published under the loader's lock");
    check->update();
    std::cout << "published" << std::endl;
    std::string line;
    std::getline(std::cin, line);
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
        {"publish-under-loader-lock", publishUnderTheLoadersLock},
        {"throw", throwOutOfMain},
        {"crash", crash},
    };
    return ways.at(arguments[1])();
}
