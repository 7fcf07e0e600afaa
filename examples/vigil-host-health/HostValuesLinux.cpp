// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "HostValues.h"

#include <sys/statvfs.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <thread>

#include "ProcFiles.h"

namespace host {

namespace {

/// Empty when the file cannot be read.
std::string readFile(const char* path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// As df shows it: without the blocks reserved for the administrator. Nothing for a disk without a size.
std::optional<double> usePercentOf(const std::string& mountPoint)
{
    struct statvfs info = {};
    if (statvfs(mountPoint.c_str(), &info) != 0)
        return std::nullopt;
    const double used = static_cast<double>(info.f_blocks) - static_cast<double>(info.f_bfree);
    const double usable = used + static_cast<double>(info.f_bavail);
    if (usable <= 0.0)
        return std::nullopt;
    return 100.0 * used / usable;
}

} // namespace

std::optional<double> loadPerCore()
{
    const auto load = procfiles::parseLoad(readFile("/proc/loadavg"));
    const unsigned int cores = std::thread::hardware_concurrency();
    if (!load || cores == 0)
        return std::nullopt;
    return *load / cores;
}

std::optional<double> memoryUsePercent()
{
    const auto use = procfiles::parseMemory(readFile("/proc/meminfo"));
    return use ? std::optional(use->memoryPercent) : std::nullopt;
}

std::optional<double> swapUsePercent()
{
    const auto use = procfiles::parseMemory(readFile("/proc/meminfo"));
    return use ? std::optional(use->swapPercent) : std::nullopt;
}

std::optional<double> uptimeHours()
{
    const auto seconds = procfiles::parseUptimeSeconds(readFile("/proc/uptime"));
    return seconds ? std::optional(*seconds / 3600.0) : std::nullopt;
}

std::optional<double> processCount()
{
    std::error_code error;
    std::filesystem::directory_iterator entry("/proc", error);
    double count = 0;
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        if (procfiles::isProcessName(entry->path().filename().string()))
            ++count;
    }
    return error ? std::nullopt : std::optional(count);
}

std::optional<std::vector<Disk>> disks()
{
    const auto mounts = procfiles::parseMounts(readFile("/proc/self/mountinfo"));
    if (mounts.empty())
        return std::nullopt;
    std::vector<Disk> disks;
    for (const procfiles::Mount& mount : procfiles::selectDisks(mounts)) {
        if (const auto use = usePercentOf(mount.mountPoint))
            disks.push_back({mount.mountPoint, *use});
    }
    return disks;
}

} // namespace host
