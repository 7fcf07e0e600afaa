// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/PassedSocket.h"

namespace agent {

Error takePassedSocket(int& descriptor)
{
    descriptor = noSocket;
    return {};
}

} // namespace agent
