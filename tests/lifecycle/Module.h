// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_LIFECYCLE_MODULE_H
#define VIGIL_TESTS_LIFECYCLE_MODULE_H

#include <string>

/// Loads and unloads code without Qt. Each system has one source file.
namespace module {

/// Null on failure, with the reason on standard error.
void* load(const char* path);

/// Null if the function does not exist.
void (*function(void* module, const char* name))();

void unload(void* module);

/// True if a module with this file name is loaded.
bool isLoaded(const std::string& fileName);

} // namespace module

#endif
