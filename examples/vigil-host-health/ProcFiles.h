// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_PROCFILES_H
#define VIGIL_HOST_HEALTH_PROCFILES_H

#include <optional>
#include <string>
#include <vector>

/// Understands the text of Linux's /proc files. Reads no file itself, so that it can be tested with any text.
/// Text that is not what it should be gives nothing.
namespace procfiles {

struct MemoryUse
{
    double memoryPercent = 0.0;
    double swapPercent = 0.0; ///< 0 without swap space
};

struct Mount
{
    std::string device; ///< "major:minor"
    std::string root;   ///< what of the file system is mounted; "/" is all of it
    std::string mountPoint;
    std::string fileSystem;
    std::string source;
};

/// The mean of the last minute in /proc/loadavg.
std::optional<double> parseLoad(const std::string& text);

/// /proc/meminfo. Memory that the kernel can give back at once does not count as used.
std::optional<MemoryUse> parseMemory(const std::string& text);

/// /proc/uptime.
std::optional<double> parseUptimeSeconds(const std::string& text);

/// /proc/self/mountinfo. Lines that are not understood are left out.
std::vector<Mount> parseMounts(const std::string& text);

/// The mounts of disks with something of their own to fill up, each device once, at the place with the
/// shortest name. When there is none, as in most containers, the root whatever it is.
std::vector<Mount> selectDisks(const std::vector<Mount>& mounts);

/// Whether an entry of /proc is a process: a name of digits.
bool isProcessName(const std::string& name);

} // namespace procfiles

#endif
