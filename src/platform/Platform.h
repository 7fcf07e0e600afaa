// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_PLATFORM_PLATFORM_H
#define VIGIL_PLATFORM_PLATFORM_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

/// The seam to the operating system: everything that differs between systems, one source file for each of
/// them, chosen by the build. All functions may be called from any thread and do not throw unless they say
/// so.
namespace platform {

/// A thread that runs one routine.
///
/// Purpose: like std::thread, but it can be asked whether the system still has it, and waited for with a
/// limit. At the end of a process the system may have ended every thread but one, and in a forked child it
/// has; who waits for such a thread waits for ever.
///
/// Threads: the object belongs to the thread that made it.
/// Ownership: destroying the object lets go of the thread; it neither ends it nor waits for it.
class Thread
{
public:
    /// Null when the system has no thread to give.
    static std::unique_ptr<Thread> start(std::function<int()> routine);

    virtual ~Thread() = default;

    /// True once the system has no such thread any more, whatever ended it.
    virtual bool hasEnded() const = 0;

    /// False in a forked child of the process that started the thread.
    virtual bool isOfThisProcess() const = 0;

    /// True on the thread itself.
    virtual bool isCurrent() const = 0;

    /// Waits until the thread has ended, at most timeoutMs milliseconds, without limit when negative. Returns
    /// whether it has ended.
    virtual bool join(int timeoutMs) = 0;
};

/// The system's id of the calling thread.
std::uint32_t currentThreadId();

/// Suspends the calling thread.
void sleepMs(unsigned int ms);

/// The full path of a loaded module in the system's 8-bit encoding; with null, that of the module that this
/// very code stands in. Empty when no such module is loaded.
std::string moduleFilePath(const char* moduleName);

/// Keeps the module that contains address loaded until the end of the process.
void pinModule(const void* address);

} // namespace platform

#endif
