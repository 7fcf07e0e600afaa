// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "vigilctl/Terminal.h"

#include <unistd.h>

namespace vigilctl {

bool isTerminal()
{
    return isatty(STDOUT_FILENO) == 1;
}

} // namespace vigilctl
