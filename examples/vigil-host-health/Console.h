// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_CONSOLE_H
#define VIGIL_HOST_HEALTH_CONSOLE_H

#include <string>

/// Writes one line to standard output and flushes it. Callable from any thread; lines never mix.
void say(const std::string& line);

/// As say(), on standard error.
void complain(const std::string& line);

#endif
