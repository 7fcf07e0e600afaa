// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_LIFECYCLE_MODULE_H
#define VIGIL_TESTS_LIFECYCLE_MODULE_H

#include <string>

/// Loading code into the process and unloading it again, by the means of the system alone: one source file
/// for each system.
namespace module {

/// Null when it cannot be loaded; the reason is on standard error.
void* load(const char* path);

/// Null when there is no such function.
void (*function(void* module, const char* name))();

void unload(void* module);

/// Whether the process has a module whose file has this name.
bool isLoaded(const std::string& fileName);

} // namespace module

#endif
