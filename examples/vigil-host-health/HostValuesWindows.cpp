// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "HostValues.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// psapi.h needs windows.h before it.
#include <psapi.h>

namespace host {

namespace {

/// Processor time since the start of the system, summed over all processors, in 100 ns.
struct ProcessorTimes
{
    ULONGLONG idle = 0;
    ULONGLONG all = 0;
};

ULONGLONG toNumber(const FILETIME& time)
{
    return (static_cast<ULONGLONG>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

std::optional<ProcessorTimes> processorTimes()
{
    FILETIME idle;
    FILETIME kernel; // idle time is part of it
    FILETIME user;
    if (!GetSystemTimes(&idle, &kernel, &user))
        return std::nullopt;
    return ProcessorTimes{toNumber(idle), toNumber(kernel) + toNumber(user)};
}

std::optional<MEMORYSTATUSEX> memoryStatus()
{
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof(status);
    return GlobalMemoryStatusEx(&status) ? std::optional(status) : std::nullopt;
}

double usedPercent(ULONGLONG whole, ULONGLONG free)
{
    if (whole == 0 || free >= whole)
        return 0.0;
    return 100.0 * static_cast<double>(whole - free) / static_cast<double>(whole);
}

} // namespace

std::optional<double> loadPerCore()
{
    static ProcessorTimes last;
    const auto now = processorTimes();
    if (!now)
        return std::nullopt;
    const double idle = static_cast<double>(now->idle - last.idle);
    const double all = static_cast<double>(now->all - last.all);
    last = *now;
    return all > 0.0 ? (all - idle) / all : 0.0;
}

std::optional<double> memoryUsePercent()
{
    const auto status = memoryStatus();
    return status ? std::optional(usedPercent(status->ullTotalPhys, status->ullAvailPhys)) : std::nullopt;
}

/// The use of the page files: the commit limit without the physical memory.
std::optional<double> swapUsePercent()
{
    const auto status = memoryStatus();
    if (!status)
        return std::nullopt;
    const ULONGLONG whole =
        status->ullTotalPageFile > status->ullTotalPhys ? status->ullTotalPageFile - status->ullTotalPhys : 0;
    const ULONGLONG free =
        status->ullAvailPageFile > status->ullAvailPhys ? status->ullAvailPageFile - status->ullAvailPhys : 0;
    return usedPercent(whole, free);
}

std::optional<double> uptimeHours()
{
    return static_cast<double>(GetTickCount64()) / 3600000.0;
}

std::optional<double> processCount()
{
    PERFORMANCE_INFORMATION info = {};
    info.cb = sizeof(info);
    return K32GetPerformanceInfo(&info, sizeof(info)) ? std::optional<double>(info.ProcessCount)
                                                      : std::nullopt;
}

std::optional<std::vector<Disk>> disks()
{
    const DWORD drives = GetLogicalDrives(); // one bit for each letter
    if (drives == 0)
        return std::nullopt;
    std::vector<Disk> disks;
    for (int i = 0; i < 26; ++i) {
        const std::string root = std::string(1, static_cast<char>('A' + i)) + ":\\";
        if (!(drives & (1u << i)) || GetDriveTypeA(root.c_str()) != DRIVE_FIXED)
            continue;
        ULARGE_INTEGER available = {};
        ULARGE_INTEGER whole = {};
        if (GetDiskFreeSpaceExA(root.c_str(), &available, &whole, nullptr) && whole.QuadPart > 0)
            disks.push_back({root, usedPercent(whole.QuadPart, available.QuadPart)});
    }
    return disks;
}

} // namespace host
