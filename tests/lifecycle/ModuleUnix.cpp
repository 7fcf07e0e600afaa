// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "lifecycle/Module.h"

#include <dlfcn.h>

#include <fstream>
#include <iostream>

namespace module {

void* load(const char* path)
{
    void* module = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!module)
        std::cerr << dlerror() << std::endl;
    return module;
}

void (*function(void* module, const char* name))()
{
    return reinterpret_cast<void (*)()>(dlsym(module, name));
}

void unload(void* module)
{
    dlclose(module);
}

bool isLoaded(const std::string& fileName)
{
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line)) {
        if (line.find(fileName) != std::string::npos)
            return true;
    }
    return false;
}

} // namespace module
