// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Loads the plugin, uses the function that its second argument names, and unloads it, twice. Ends with 1 when
// the plugin cannot be used and with 2 when the library, a file of the name in the third argument, is still
// there afterwards.

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
    // In a thread of its own, which ends after the library has gone: whatever the library left behind in it
    // is used now.
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
