#include "platform/Platform.h"

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

namespace platform {

namespace {

bool isSignalled(HANDLE handle)
{
    return WaitForSingleObject(handle, 0) == WAIT_OBJECT_0;
}

class WindowsThreadProbe : public ThreadProbe
{
public:
    explicit WindowsThreadProbe(HANDLE handle) : m_handle(handle) {}
    ~WindowsThreadProbe() override { CloseHandle(m_handle); }
    WindowsThreadProbe(const WindowsThreadProbe&) = delete;
    WindowsThreadProbe& operator=(const WindowsThreadProbe&) = delete;

    bool hasEnded() const override { return isSignalled(m_handle); }

private:
    const HANDLE m_handle;
};

class WindowsThread : public Thread
{
public:
    WindowsThread() = default;
    WindowsThread(const WindowsThread&) = delete;
    WindowsThread& operator=(const WindowsThread&) = delete;

    ~WindowsThread() override
    {
        if (m_handle)
            CloseHandle(m_handle);
    }

    bool start(std::function<int()> routine)
    {
        auto argument = std::make_unique<std::function<int()>>(std::move(routine));
        m_handle = CreateThread(nullptr, 0, &WindowsThread::run, argument.get(), 0, &m_id);
        if (m_handle)
            static_cast<void>(argument.release()); // now the thread's
        return m_handle != nullptr;
    }

    bool hasEnded() const override { return isSignalled(m_handle); }

    bool isCurrent() const override { return GetCurrentThreadId() == m_id; }

    bool join(int timeoutMs) override
    {
        const DWORD limit = timeoutMs < 0 ? INFINITE : static_cast<DWORD>(timeoutMs);
        return WaitForSingleObject(m_handle, limit) == WAIT_OBJECT_0;
    }

private:
    static DWORD WINAPI run(LPVOID argument)
    {
        const std::unique_ptr<std::function<int()>> routine(static_cast<std::function<int()>*>(argument));
        return static_cast<DWORD>((*routine)());
    }

    HANDLE m_handle = nullptr;
    DWORD m_id = 0;
};

HMODULE moduleOfAddress(const void* address, DWORD flags)
{
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | flags, static_cast<LPCSTR>(address), &module);
    return module;
}

HMODULE moduleOfName(const char* name)
{
    HMODULE module = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, name, &module);
    return module;
}

} // namespace

std::unique_ptr<Thread> Thread::start(std::function<int()> routine)
{
    auto thread = std::make_unique<WindowsThread>();
    if (!thread->start(std::move(routine)))
        return nullptr;
    return thread;
}

std::unique_ptr<ThreadProbe> ThreadProbe::ofCurrentThread()
{
    HANDLE handle = OpenThread(SYNCHRONIZE, FALSE, GetCurrentThreadId());
    return handle ? std::make_unique<WindowsThreadProbe>(handle) : nullptr;
}

std::uint32_t currentThreadId()
{
    return GetCurrentThreadId();
}

void sleepMs(unsigned int ms)
{
    Sleep(ms);
}

std::string moduleFilePath(const char* moduleName)
{
    const HMODULE module = moduleName ? moduleOfName(moduleName)
                                      : moduleOfAddress(reinterpret_cast<const void*>(&sleepMs),
                                                        GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT);
    char path[260];
    const DWORD length = module ? GetModuleFileNameA(module, path, sizeof(path)) : 0;
    return std::string(path, length);
}

void pinModule(const void* address)
{
    moduleOfAddress(address, GET_MODULE_HANDLE_EX_FLAG_PIN);
}

} // namespace platform
