// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_MEMORYOFMETRICS_H
#define VIGIL_BENCHMARKS_MEMORYOFMETRICS_H

/// Prints the resident kB that each of this number of metrics adds to a process. Run it in one of its own.
void printMemoryOfMetrics(int metrics);

/// The same figure, measured in another process of this program.
double memoryOfMetrics(const char* program, int metrics);

#endif
