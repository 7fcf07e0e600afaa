// Loads the plugin, uses the function that its second argument names, and unloads it, twice. Ends with 1 when
// the plugin cannot be used and with 2 when the library is still there afterwards.

#include <dlfcn.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <string>
#include <thread>

namespace {

bool isMapped(const std::string& name)
{
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line)) {
        if (line.find(name) != std::string::npos)
            return true;
    }
    return false;
}

bool useOnce(const char* path, const char* function)
{
    void* plugin = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!plugin) {
        std::cerr << dlerror() << std::endl;
        return false;
    }
    const auto use = reinterpret_cast<void (*)()>(dlsym(plugin, function));
    if (!use)
        return false;
    use();
    dlclose(plugin);
    return true;
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
            else if (isMapped("libvigil.so"))
                result = 2;
        }
    }).join();
    std::cout << "leaving" << std::endl;
    return result;
}
