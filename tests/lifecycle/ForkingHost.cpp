// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Forks while the library is running. The child, which has none of the library's threads, ends in the
// ordinary way, and so does the parent, whose connection must have survived.

#include <vigil/vigil.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>

int main()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    check->update();
    const pid_t child = fork();
    if (child == 0)
        std::exit(3);
    int status = 0;
    waitpid(child, &status, 0);
    const bool childEnded = WIFEXITED(status) && WEXITSTATUS(status) == 3;
    check->setDescription("published after the fork");
    check->update();
    std::cout << "leaving" << std::endl;
    check->destroy();
    return childEnded ? 0 : 1;
}
