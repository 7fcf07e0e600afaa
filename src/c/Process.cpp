// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The functions of <vigil/vigil_c.h> about codes and the process.

#include <vigil/vigil_c.h>

#include <array>
#include <cstddef>

#include "client/CallbackStoreLock.h"
#include "client/Client.h"
#include "platform/Platform.h"

const char* vigil_code_name(vigil_code code)
{
    static constexpr std::array<const char*, 12> names = {
        "VIGIL_OK",          "VIGIL_NO_MEMORY",   "VIGIL_NULL",   "VIGIL_BAD_UTF8",
        "VIGIL_BAD_HANDLE",  "VIGIL_BAD_VALUE",   "VIGIL_TAKEN",  "VIGIL_TOO_SMALL",
        "VIGIL_IN_CALLBACK", "VIGIL_CHECK_ENDED", "VIGIL_FORKED", "VIGIL_INTERNAL"};
    const auto index = static_cast<std::size_t>(code);
    return index < names.size() ? names[index] : "unknown";
}

int vigil_in_callback(void)
{
    return CallbackStoreLock::isHeldByThisThread() ? 1 : 0;
}

int vigil_in_forked_child(void)
{
    return platform::isForkedChild() ? 1 : 0;
}

int vigil_is_connected(void)
{
    return !platform::isForkedChild() && Client::isAnyConnected() ? 1 : 0;
}
