// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A check that exists before main() and a child forked beside it: the library is ready for both once it is
// loaded, linked statically or not. In the child every call returns at once.

#include <vigil/vigil.h>

#include <sys/wait.h>
#include <unistd.h>

namespace {

vigil::HealthCheck* const check = vigil::createHealthCheck("consumer", "before main");

} // namespace

int main()
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(30); // ends a child that waits for threads it does not have
        check->update();
        check->destroy();
        _exit(0);
    }
    check->update();
    int status = -1;
    waitpid(child, &status, 0);
    check->destroy();
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? 0 : 1;
}
