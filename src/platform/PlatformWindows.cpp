// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "platform/Platform.h"

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <QDir>

#include <string>
#include <utility>

namespace platform {

namespace {

bool isSignalled(HANDLE handle)
{
    return WaitForSingleObject(handle, 0) == WAIT_OBJECT_0;
}

/// Owns a handle of the system.
class Handle
{
public:
    explicit Handle(HANDLE handle = nullptr) : m_handle(handle) {}
    Handle(Handle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~Handle()
    {
        if (m_handle)
            CloseHandle(m_handle);
    }

    HANDLE get() const { return m_handle; }

    Handle duplicate() const
    {
        HANDLE copy = nullptr;
        DuplicateHandle(GetCurrentProcess(), m_handle, GetCurrentProcess(), &copy, 0, FALSE,
                        DUPLICATE_SAME_ACCESS);
        return Handle(copy);
    }

private:
    HANDLE m_handle;
};

/// While a library is being unloaded, Windows lets no thread end by itself, so join() with a limit must not
/// wait for the thread. Nor may the thread be left alone: its last instructions are in the library. So it
/// says that its routine has returned and, in the same call of the system, parks until join() decides. With a
/// limit join() terminates the parked thread, which holds nothing; without one it lets the thread end.
class WindowsThread : public Thread
{
public:
    ~WindowsThread() override { SetEvent(m_mayEnd.get()); }

    bool start(std::function<int()> routine)
    {
        m_returned = makeEvent();
        m_mayEnd = makeEvent();
        auto task =
            std::make_unique<Task>(Task{std::move(routine), m_returned.duplicate(), m_mayEnd.duplicate()});
        m_thread = Handle(CreateThread(nullptr, 0, &WindowsThread::run, task.get(), 0, &m_id));
        if (m_thread.get())
            static_cast<void>(task.release()); // now the thread's
        return m_thread.get() != nullptr;
    }

    bool hasEnded() const override { return isSignalled(m_thread.get()); }

    bool isOfThisProcess() const override { return true; }

    bool isCurrent() const override { return GetCurrentThreadId() == m_id; }

    bool join(int timeoutMs) override
    {
        const HANDLE ends[] = {m_thread.get(), m_returned.get()};
        const DWORD limit = timeoutMs < 0 ? INFINITE : static_cast<DWORD>(timeoutMs);
        const DWORD end = WaitForMultipleObjects(2, ends, FALSE, limit);
        if (end == WAIT_OBJECT_0 + 1)
            endParked(timeoutMs < 0);
        return end == WAIT_OBJECT_0 || end == WAIT_OBJECT_0 + 1;
    }

private:
    static constexpr DWORD endMs = 1000; // ample; INFINITE would hang a host that stops in a DLL's destructor

    struct Task
    {
        std::function<int()> routine;
        Handle returned;
        Handle mayEnd;
    };

    static Handle makeEvent() { return Handle(CreateEventA(nullptr, TRUE, FALSE, nullptr)); }

    static DWORD WINAPI run(LPVOID argument)
    {
        Handle returned;
        Handle mayEnd;
        int result = 0;
        {
            const std::unique_ptr<Task> task(static_cast<Task*>(argument));
            result = task->routine();
            returned = std::move(task->returned);
            mayEnd = std::move(task->mayEnd);
        }
        SignalObjectAndWait(returned.get(), mayEnd.get(), INFINITE, FALSE);
        return static_cast<DWORD>(result);
    }

    void endParked(bool byItself)
    {
        if (byItself)
            SetEvent(m_mayEnd.get());
        else
            TerminateThread(m_thread.get(), 0);
        WaitForSingleObject(m_thread.get(), endMs);
    }

    Handle m_thread;
    Handle m_returned;
    Handle m_mayEnd;
    DWORD m_id = 0;
};

/// With the prefix that lifts the limit on a path's length.
std::wstring systemPath(const QString& path)
{
    const QString native = QDir::toNativeSeparators(QDir::cleanPath(path));
    const bool hasDrive = native.size() > 1 && native[1] == QLatin1Char(':');
    return ((hasDrive ? QStringLiteral("\\\\?\\") : QString()) + native).toStdWString();
}

HANDLE openFile(const std::wstring& path, DWORD access, DWORD disposition)
{
    const HANDLE file =
        CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    return file == INVALID_HANDLE_VALUE ? nullptr : file;
}

/// The handle is not inheritable, so child processes do not get it.
class WindowsPrivateFile : public PrivateFile
{
public:
    explicit WindowsPrivateFile(std::wstring path) : m_path(std::move(path)) {}

    bool open()
    {
        m_file = Handle(openFile(m_path, GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS));
        BY_HANDLE_FILE_INFORMATION info{};
        if (!m_file.get() || !GetFileInformationByHandle(m_file.get(), &info))
            return false;
        constexpr DWORD notPlain = FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY;
        if ((info.dwFileAttributes & notPlain) == 0 && info.nNumberOfLinks == 1)
            return true;
        SetLastError(ERROR_ACCESS_DENIED);
        return false;
    }

    /// Locks one byte far beyond the end: Windows lets nobody read locked bytes.
    bool lock() override
    {
        OVERLAPPED position{};
        position.OffsetHigh = 0x7fffffff;
        return LockFileEx(m_file.get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0,
                          &position) != 0;
    }

    bool clear() override { return cutTo(0); }

    bool append(const QByteArray& bytes) override
    {
        const qint64 before = size();
        DWORD written = 0;
        const auto wanted = static_cast<DWORD>(bytes.size());
        if (moveTo(before) && WriteFile(m_file.get(), bytes.constData(), wanted, &written, nullptr) != 0 &&
            written == wanted)
            return true;
        const DWORD error = GetLastError();
        cutTo(before);
        SetLastError(error);
        return false;
    }

    qint64 size() const override
    {
        LARGE_INTEGER size{};
        return GetFileSizeEx(m_file.get(), &size) ? size.QuadPart : 0;
    }

    /// Windows removes no open file. The second opening updates the size in the file's directory entry.
    bool isInPlace() const override
    {
        const Handle second(openFile(m_path, GENERIC_READ, OPEN_EXISTING));
        return true;
    }

private:
    bool moveTo(qint64 offset)
    {
        LARGE_INTEGER position{};
        position.QuadPart = offset;
        return SetFilePointerEx(m_file.get(), position, nullptr, FILE_BEGIN) != 0;
    }

    bool cutTo(qint64 size) { return moveTo(size) && SetEndOfFile(m_file.get()); }

    const std::wstring m_path;
    Handle m_file;
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

std::unique_ptr<PrivateFile> PrivateFile::open(const QString& path)
{
    auto file = std::make_unique<WindowsPrivateFile>(systemPath(path));
    if (!file->open())
        return nullptr;
    return file;
}

bool makePrivateDirectory(const QString& path)
{
    return QDir().mkpath(path);
}

bool isSharedDirectory(const QString&)
{
    return false; // each user has a temporary directory of their own
}

bool isSetUserId()
{
    return false;
}

QString environmentVariable(const char* name)
{
    return QString::fromLocal8Bit(qgetenv(name));
}

QString userId()
{
    return {};
}

std::uint32_t processId()
{
    return GetCurrentProcessId();
}

/// Asked once: the answer needs the loader's lock, and the client thread must not wait for it when it opens
/// the next log file.
QString programPath()
{
    static const QString program = [] {
        wchar_t path[MAX_PATH];
        const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
        return QDir::fromNativeSeparators(QString::fromWCharArray(path, static_cast<int>(length)));
    }();
    return program;
}

std::unique_ptr<Thread> Thread::start(std::function<int()> routine)
{
    auto thread = std::make_unique<WindowsThread>();
    if (!thread->start(std::move(routine)))
        return nullptr;
    return thread;
}

ForkWatch::ForkWatch() = default;
ForkWatch::~ForkWatch() = default;

bool isForkedChild()
{
    return false;
}

void closeInForkedChildren(std::intptr_t) {} // the system has no fork

struct BlockedSignals::Mask
{
};

BlockedSignals::BlockedSignals() = default;
BlockedSignals::~BlockedSignals() = default;

DelayedCancellation::DelayedCancellation() = default;
DelayedCancellation::~DelayedCancellation() = default;

bool qtServesHostLoop()
{
    return false;
}

void fillStandardDescriptors() {} // the numbers of handles are never those of the standard ones

bool hasDescriptors(int)
{
    return true; // the system has no such limit
}

bool socketsRaiseSignals()
{
    return false;
}

// Not used: no write raises a signal here.

std::int64_t sendQuietly(std::intptr_t, const char*, std::size_t)
{
    return -1;
}

bool waitUntilWritable(std::intptr_t, int)
{
    return false;
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
