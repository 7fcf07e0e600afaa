// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "platform/Platform.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <string>

#include <climits>
#include <cstdlib>
#include <dlfcn.h>
#include <link.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

namespace {

pid_t kernelThreadId()
{
    return static_cast<pid_t>(syscall(SYS_gettid));
}

class LinuxThread : public Thread
{
public:
    ~LinuxThread() override
    {
        if (m_started && !m_joined)
            pthread_detach(m_thread);
    }

    bool start(std::function<int()> routine)
    {
        auto argument = std::make_unique<std::function<int()>>(std::move(routine));
        const BlockedSignals blocked;
        m_started = pthread_create(&m_thread, nullptr, &LinuxThread::run, argument.get()) == 0;
        if (m_started)
            static_cast<void>(argument.release()); // now the thread's
        return m_started;
    }

    bool hasEnded() const override { return m_joined || !isOfThisProcess(); }

    bool isOfThisProcess() const override { return getpid() == m_process; }

    bool isCurrent() const override { return !hasEnded() && pthread_equal(pthread_self(), m_thread) != 0; }

    bool join(int timeoutMs) override
    {
        if (!hasEnded())
            m_joined = (timeoutMs < 0 ? pthread_join(m_thread, nullptr) : timedJoin(timeoutMs)) == 0;
        return hasEnded();
    }

private:
    static void* run(void* argument)
    {
        const std::unique_ptr<std::function<int()>> routine(static_cast<std::function<int()>*>(argument));
        (*routine)();
        return nullptr;
    }

    /// Not pthread_timedjoin_np(): its limit is a time of the clock that the administrator may set.
    int timedJoin(int timeoutMs)
    {
        using Clock = std::chrono::steady_clock;
        const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
        int result = pthread_tryjoin_np(m_thread, nullptr);
        while (result == EBUSY && Clock::now() < deadline) {
            sleepMs(1);
            result = pthread_tryjoin_np(m_thread, nullptr);
        }
        return result;
    }

    const pid_t m_process = getpid(); // a forked child does not have its parent's threads
    pthread_t m_thread{};
    bool m_started = false;
    bool m_joined = false;
};

std::string absolutePath(const char* path)
{
    char resolved[PATH_MAX];
    return realpath(path, resolved) ? resolved : path;
}

std::string pathOfAddress(const void* address)
{
    Dl_info info{};
    return dladdr(address, &info) != 0 && info.dli_fname ? absolutePath(info.dli_fname) : std::string();
}

std::string pathOfModule(const char* moduleName)
{
    void* handle = dlopen(moduleName, RTLD_LAZY | RTLD_NOLOAD);
    if (!handle)
        return {};
    link_map* map = nullptr;
    const bool found = dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 && map;
    std::string path = found ? absolutePath(map->l_name) : std::string();
    dlclose(handle); // releases dlopen's reference
    return path;
}

} // namespace

std::unique_ptr<Thread> Thread::start(std::function<int()> routine)
{
    auto thread = std::make_unique<LinuxThread>();
    if (!thread->start(std::move(routine)))
        return nullptr;
    return thread;
}

struct BlockedSignals::Mask
{
    sigset_t set;
};

BlockedSignals::BlockedSignals() : m_previous(std::make_unique<Mask>())
{
    sigset_t blocked;
    sigfillset(&blocked);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS})
        sigdelset(&blocked, fault);
    pthread_sigmask(SIG_BLOCK, &blocked, &m_previous->set);
}

BlockedSignals::~BlockedSignals()
{
    pthread_sigmask(SIG_SETMASK, &m_previous->set, nullptr);
}

bool socketsRaiseSignals()
{
    return true;
}

std::int64_t sendQuietly(std::intptr_t socket, const char* data, std::size_t size)
{
    for (;;) {
        const ssize_t sent = send(static_cast<int>(socket), data, size, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent >= 0)
            return sent;
        if (errno == EAGAIN || errno == ENOBUFS)
            return 0;
        if (errno != EINTR)
            return -1;
    }
}

bool waitUntilWritable(std::intptr_t socket, int timeoutMs)
{
    pollfd entry{static_cast<int>(socket), POLLOUT, 0};
    return poll(&entry, 1, timeoutMs) > 0;
}

std::uint32_t currentThreadId()
{
    return static_cast<std::uint32_t>(kernelThreadId());
}

void sleepMs(unsigned int ms)
{
    timespec left{static_cast<time_t>(ms / 1000), static_cast<long>(ms % 1000) * 1000000};
    while (nanosleep(&left, &left) == -1 && errno == EINTR) {
    }
}

std::string moduleFilePath(const char* moduleName)
{
    return moduleName ? pathOfModule(moduleName) : pathOfAddress(reinterpret_cast<const void*>(&sleepMs));
}

void pinModule(const void* address)
{
    Dl_info info{};
    if (dladdr(address, &info) == 0 || !info.dli_fname)
        return;
    // The handle is never closed.
    dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

} // namespace platform
