// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_PLATFORM_PLATFORM_H
#define VIGIL_PLATFORM_PLATFORM_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

/// The interface to the operating system. Each system has one source file, chosen by the build. All functions
/// may be called from any thread; none throws.
namespace platform {

/// Runs one routine in a thread of its own.
///
/// Purpose: like std::thread, but with hasEnded() and a time-out for join(). At the end of a process, and in
/// a forked child, the system may have ended the thread; std::thread::join() would never return.
///
/// Threads: the object belongs to its creator's thread.
/// Ownership: the destructor detaches the thread; it neither ends it nor waits for it.
class Thread
{
public:
    /// Null if the system has no thread left.
    static std::unique_ptr<Thread> start(std::function<int()> routine);

    virtual ~Thread() = default;

    /// True once the thread is gone, for any reason.
    virtual bool hasEnded() const = 0;

    /// False in a forked child.
    virtual bool isOfThisProcess() const = 0;

    /// True on the thread itself.
    virtual bool isCurrent() const = 0;

    /// Waits for the end of the thread, at most timeoutMs milliseconds; negative means no limit. False on
    /// time-out.
    virtual bool join(int timeoutMs) = 0;
};

/// The system's id of the calling thread.
std::uint32_t currentThreadId();

/// Suspends the calling thread.
void sleepMs(unsigned int ms);

/// The full path of a loaded module in the system's 8-bit encoding. Null means this library. Empty if the
/// module is not loaded.
std::string moduleFilePath(const char* moduleName);

/// Keeps the module at this address loaded until the end of the process.
void pinModule(const void* address);

} // namespace platform

#endif
