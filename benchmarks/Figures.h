// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_FIGURES_H
#define VIGIL_BENCHMARKS_FIGURES_H

#include <string>

/// What the benchmarks have measured, and the ratios between it.
namespace figures {

/// Adds one sample. The median of all samples under a name counts.
void add(const std::string& name, double value);

bool isKnown(const std::string& name);
double median(const std::string& name);

/// Prints the table of ratios with what is required of each. Leaves out what was not measured.
void printRatios();

/// Writes figures and ratios as JSON. False if the file cannot be written.
bool writeJson(const std::string& path);

} // namespace figures

#endif
