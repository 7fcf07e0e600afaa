// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_COSTPICTURE_H
#define VIGIL_BENCHMARKS_COSTPICTURE_H

#include <string>

/// Draws the processor time of a cell over the number of metrics, as SVG, from the figures measured in this
/// run. False if one of them is missing or the file cannot be written.
bool writeCostPicture(const std::string& path);

#endif
