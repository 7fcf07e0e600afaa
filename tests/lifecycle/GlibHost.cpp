// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A host with GLib's main loop and without Qt. Its loop must run in its own thread alone.
//
// Exit codes: 1 if the library has run the host's loop, 2 if the host cannot run it, 3 without GLib.

#include <vigil/vigil.h>

#include <dlfcn.h>

#include <atomic>
#include <chrono>
#include <iostream>
#include <string>
#include <thread>

namespace {

// GLib's functions. The headers of GLib are not needed to build this.
struct Glib
{
    using Callback = int (*)(void*);
    void* (*newLoop)(void* context, int isRunning) = nullptr;
    void (*run)(void* loop) = nullptr;
    void (*quit)(void* loop) = nullptr;
    unsigned int (*addTimeout)(unsigned int ms, Callback callback, void* data) = nullptr;

    bool load()
    {
        void* library = dlopen("libglib-2.0.so.0", RTLD_NOW);
        return library && find(library, "g_main_loop_new", newLoop) &&
               find(library, "g_main_loop_run", run) && find(library, "g_main_loop_quit", quit) &&
               find(library, "g_timeout_add", addTimeout);
    }

private:
    template <typename Function>
    static bool find(void* library, const char* name, Function& function)
    {
        function = reinterpret_cast<Function>(dlsym(library, name));
        return function != nullptr;
    }
};

Glib glib;
void* loop = nullptr;
const std::thread::id hostThread = std::this_thread::get_id();
std::atomic<int> ticks{0};
std::atomic<int> strayTicks{0};

int tick(void*)
{
    constexpr int enough = 5;
    if (std::this_thread::get_id() != hostThread)
        ++strayTicks;
    if (++ticks >= enough)
        glib.quit(loop);
    return 1; // and again
}

} // namespace

int main()
{
    if (!glib.load())
        return 3;
    loop = glib.newLoop(nullptr, 0);
    glib.addTimeout(1, tick, nullptr);
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    check->setDescription("published before the loop");
    check->update();

    std::string line;
    std::cout << "published" << std::endl;
    std::getline(std::cin, line); // long enough for the library to run the loop

    const int ticksBefore = ticks;
    ticks = 0;
    glib.run(loop);
    check->setDescription("published after the loop");
    check->update();
    std::cout << "leaving" << std::endl;
    check->destroy();
    if (ticksBefore > 0 || strayTicks > 0)
        return 1;
    return ticks > 0 ? 0 : 2;
}
