// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "lifecycle/Module.h"

#include <windows.h>

#include <iostream>

namespace module {

void* load(const char* path)
{
    const HMODULE module = LoadLibraryA(path);
    if (!module)
        std::cerr << path << ": error " << GetLastError() << std::endl;
    return module;
}

void (*function(void* module, const char* name))()
{
    // Cast to void* first: compilers warn about a cast from FARPROC to another function type.
    return reinterpret_cast<void (*)()>(
        reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name)));
}

void unload(void* module)
{
    FreeLibrary(static_cast<HMODULE>(module));
}

bool isLoaded(const std::string& fileName)
{
    return GetModuleHandleA(fileName.c_str()) != nullptr;
}

} // namespace module
