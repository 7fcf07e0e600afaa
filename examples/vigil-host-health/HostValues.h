// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_HOSTVALUES_H
#define VIGIL_HOST_HEALTH_HOSTVALUES_H

#include <optional>
#include <string>
#include <vector>

/// The values of this machine: one header, with one source file for each operating system. Every call reads
/// the system again and returns nothing if the system does not provide the value. Call from one thread at a
/// time.
namespace host {

/// A mounted disk, named by its mount point.
struct Disk
{
    std::string name;
    double usePercent = 0.0;
};

/// The load divided by the number of processors; 1 means all of them are busy. The mean of the last minute,
/// or of the time since the last call if the system keeps no such mean.
std::optional<double> loadPerCore();

std::optional<double> memoryUsePercent();

/// 0 on a machine without swap space.
std::optional<double> swapUsePercent();

std::optional<double> uptimeHours();
std::optional<double> processCount();

/// Local disks only: a hanging file server must not stop the program.
std::optional<std::vector<Disk>> disks();

} // namespace host

#endif
