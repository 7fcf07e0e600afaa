// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Loads two plugins that use the library, and unloads the one while the other goes on. Says "published" and
// waits for a line before it unloads that, too. Ends with 1 when a plugin cannot be used, with 2 when the
// library, a file of the name in the third argument, goes too early, and with 3 when it does not go with its
// last user.

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
