// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The functions of <vigil/vigil_c.h> about the process.

#include <vigil/vigil_c.h>

#include "client/CallbackStoreLock.h"
#include "platform/Platform.h"

int vigil_in_callback(void)
{
    return CallbackStoreLock::isHeldByThisThread() ? 1 : 0;
}

int vigil_in_forked_child(void)
{
    return platform::isForkedChild() ? 1 : 0;
}
