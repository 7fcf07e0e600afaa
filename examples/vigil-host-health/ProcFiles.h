// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_PROCFILES_H
#define VIGIL_HOST_HEALTH_PROCFILES_H

#include <optional>
#include <string>
#include <vector>

/// Parses the text of Linux's /proc files. The functions read no file, so tests can pass any text. Malformed
/// text gives nothing.
namespace procfiles {

struct MemoryUse
{
    double memoryPercent = 0.0;
    double swapPercent = 0.0; ///< 0 without swap space
};

struct Mount
{
    std::string device; ///< "major:minor"
    std::string root;   ///< the mounted folder of the file system; "/" is all of it
    std::string mountPoint;
    std::string fileSystem;
    std::string source;
};

/// The mean of the last minute in /proc/loadavg.
std::optional<double> parseLoad(const std::string& text);

/// /proc/meminfo. Memory available at once, such as caches, does not count as used.
std::optional<MemoryUse> parseMemory(const std::string& text);

/// /proc/uptime.
std::optional<double> parseUptimeSeconds(const std::string& text);

/// /proc/self/mountinfo. Malformed lines are skipped.
std::vector<Mount> parseMounts(const std::string& text);

/// The mounted disks, without read-only images; each device once, at its shortest mount point. Without any
/// such disk, as in most containers, the root file system.
std::vector<Mount> selectDisks(const std::vector<Mount>& mounts);

/// True if an entry of /proc is a process: its name is a number.
bool isProcessName(const std::string& name);

} // namespace procfiles

#endif
