// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "lifecycle/WineHang.h"

#include <windows.h>

#include <tlhelp32.h>

#include <QStringList>

#include <cstdint>
#include <vector>

namespace {

std::vector<DWORD> threadsOf(DWORD processId)
{
    std::vector<DWORD> threads;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == processId)
            threads.push_back(entry.th32ThreadID);
    }
    CloseHandle(snapshot);
    return threads;
}

/// The address of the thread's next instruction; 0 on failure.
std::uintptr_t positionOf(DWORD threadId)
{
    const HANDLE thread =
        OpenThread(THREAD_GET_CONTEXT | THREAD_SUSPEND_RESUME | THREAD_QUERY_INFORMATION, FALSE, threadId);
    CONTEXT context{};
    context.ContextFlags = CONTEXT_CONTROL;
    SuspendThread(thread);
    const bool known = GetThreadContext(thread, &context) != 0;
    ResumeThread(thread);
    CloseHandle(thread);
    return known ? context.Rip : 0;
}

/// Wine loads its own modules at the same address in every process.
bool isInWakeUp(std::uintptr_t position)
{
    constexpr std::uintptr_t size = 0x100; // the spin is in the first half
    const auto start = reinterpret_cast<std::uintptr_t>(
        GetProcAddress(GetModuleHandleA("ntdll.dll"), "RtlWakeAddressSingle"));
    return position >= start && position < start + size;
}

/// Null if no module of this process is there.
HMODULE moduleAt(std::uintptr_t position)
{
    HMODULE module = nullptr;
    constexpr DWORD flags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    GetModuleHandleExA(flags, reinterpret_cast<LPCSTR>(position), &module);
    return module;
}

bool isInWindowSystem(std::uintptr_t position)
{
    return moduleAt(position) == GetModuleHandleA("win32u.dll");
}

bool runsUnderWine()
{
    return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
}

} // namespace

bool hangsInWine(qint64 processId)
{
    const std::vector<DWORD> threads = threadsOf(static_cast<DWORD>(processId));
    if (!runsUnderWine() || threads.size() != 1) // the others are killed
        return false;
    const std::uintptr_t position = positionOf(threads.front());
    return isInWakeUp(position) || isInWindowSystem(position);
}

QString placesOf(qint64 processId)
{
    QStringList places;
    for (const DWORD thread : threadsOf(static_cast<DWORD>(processId))) {
        const std::uintptr_t position = positionOf(thread);
        const HMODULE module = moduleAt(position);
        char path[MAX_PATH] = "";
        GetModuleFileNameA(module, path, sizeof path);
        places += QStringLiteral("%1+0x%2")
                      .arg(QLatin1String(path))
                      .arg(position - reinterpret_cast<std::uintptr_t>(module), 0, 16);
    }
    return places.join(QLatin1String(", "));
}
