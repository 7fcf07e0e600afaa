// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A host whose system has no thread left for the library. Its first argument is the number of threads that
// still start: 0 for none, 1 for the runner's alone. Later there are threads again.

#include <vigil/vigil.h>

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <iostream>
#include <string>

namespace {

std::atomic<int> threadsLeft{1000};

using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the system's function, with threads to count.
extern "C" __attribute__((visibility("default"))) int
pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*), void* argument)
{
    static const Create create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
    return threadsLeft-- > 0 ? create(thread, attributes, routine, argument) : EAGAIN;
}

int main(int, char** arguments)
{
    threadsLeft = std::stoi(arguments[1]);
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "first");
    vigil::ScalarMetric* metric = check->createScalarMetric("metric");
    check->update();
    vigil::HealthCheck* second = vigil::createHealthCheck("host", "second");
    second->update();
    metric->remove();
    second->destroy();
    check->destroy();

    threadsLeft = 1000;
    check = vigil::createHealthCheck("host", "again");
    check->setDescription("published with threads");
    check->update();
    std::cout << "leaving" << std::endl;
    check->destroy();
    return 0;
}
