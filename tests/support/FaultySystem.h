// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_FAULTYSYSTEM_H
#define VIGIL_SUPPORT_FAULTYSYSTEM_H

#include <string>

/// Functions of the system that fail on demand, in all code of the process. Linux only.
///
/// The program exports functions of the same names, so they replace the system's as those of a preloaded
/// library do. Link it with ENABLE_EXPORTS.
namespace faults {

constexpr int all = 0; ///< as a count

/// Lets the calls number first to first + count - 1 of this function fail from now on, on all threads. The
/// name "descriptors" means every function that makes one. False if the function is unknown.
bool plan(const std::string& function, int first, int count);

/// No call fails from now on. Returns how many calls the planned function has had.
int end();

} // namespace faults

#endif
