// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_LIFECYCLE_HOSTSTEPS_H
#define VIGIL_TESTS_LIFECYCLE_HOSTSTEPS_H

#include <cstdlib>
#include <iostream>
#include <string>

namespace host {

/// Exit code of a host that the system does not let do what it should. The test is skipped.
constexpr int notPossibleHere = 77;

/// Reports the start of the shutdown. On request of the test, reports "ready" first and waits for a line.
inline void sayLeaving()
{
    if (std::getenv("VIGIL_TEST_HOST_WAITS")) {
        std::string line;
        std::cout << "ready" << std::endl;
        std::getline(std::cin, line);
    }
    std::cout << "leaving" << std::endl;
}

} // namespace host

#endif
