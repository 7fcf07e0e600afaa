// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Forks while the library runs. The child has no library threads and exits normally. The parent must still be
// connected, and exits normally, too.

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
