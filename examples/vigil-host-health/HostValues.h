// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_HOSTVALUES_H
#define VIGIL_HOST_HEALTH_HOSTVALUES_H

#include <optional>
#include <string>
#include <vector>

/// What the operating system says about this machine: the seam between the checks and the system, with one
/// source file for each system. Every function reads afresh and gives nothing when the system does not tell.
/// To be called from one thread at a time.
namespace host {

/// A disk of this machine that is mounted, under the name that the system gives to the place.
struct Disk
{
    std::string name;
    double usePercent = 0.0;
};

/// How busy the processors are, as a share of all of them: 1 is a machine with just enough to do. A mean over
/// the last minute, or over the time since the last call where the system keeps no such mean.
std::optional<double> loadPerCore();

std::optional<double> memoryUsePercent();

/// 0 on a machine without swap space.
std::optional<double> swapUsePercent();

std::optional<double> uptimeHours();
std::optional<double> processCount();

/// Local disks only: a server that does not answer must not stop the program.
std::optional<std::vector<Disk>> disks();

} // namespace host

#endif
