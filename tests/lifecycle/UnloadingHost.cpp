// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Twice: loads the plugin, calls the function named by the second argument, and unloads the plugin. The third
// argument is the library's file name.
//
// Exit codes: 1 if the plugin cannot be used, 2 if the library stays loaded.

#include <iostream>
#include <thread>

#include "lifecycle/Module.h"

namespace {

bool useOnce(const char* path, const char* function)
{
    void* plugin = module::load(path);
    if (!plugin)
        return false;
    const auto use = module::function(plugin, function);
    if (use)
        use();
    module::unload(plugin);
    return use != nullptr;
}

} // namespace

int main(int, char** arguments)
{
    int result = 0;
    // In a separate thread, which ends after the library is unloaded: leftovers in its thread-local storage
    // would be used then.
    std::thread([&] {
        for (int i = 0; i < 2 && result == 0; ++i) {
            if (!useOnce(arguments[1], arguments[2]))
                result = 1;
            else if (module::isLoaded(arguments[3]))
                result = 2;
        }
    }).join();
    std::cout << "leaving" << std::endl;
    return result;
}
