// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Loads two plugins with the library and unloads the first one. Prints "published" and waits for a line, then
// unloads the second one. The third argument is the library's file name.
//
// Exit codes: 1 if a plugin cannot be used, 2 if the library is unloaded too early, 3 if it stays loaded.

#include <iostream>
#include <string>

#include "lifecycle/Module.h"

namespace {

bool use(void* plugin, const char* function)
{
    const auto call = plugin ? module::function(plugin, function) : nullptr;
    if (call)
        call();
    return call != nullptr;
}

int shareTheLibrary(char** arguments)
{
    void* first = module::load(arguments[1]);
    void* second = module::load(arguments[2]);
    if (!use(first, "start") || !use(second, "startAndStop"))
        return 1;
    module::unload(first);
    if (!module::isLoaded(arguments[3]))
        return 2;
    if (!use(second, "start"))
        return 1;
    std::string line;
    std::cout << "published" << std::endl;
    std::getline(std::cin, line);
    module::unload(second);
    return module::isLoaded(arguments[3]) ? 3 : 0;
}

} // namespace

int main(int, char** arguments)
{
    const int result = shareTheLibrary(arguments);
    std::cout << "leaving" << std::endl;
    return result;
}
