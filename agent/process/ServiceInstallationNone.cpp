// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/ServiceInstallation.h"

namespace agent::serviceInstallation {

bool isSupported()
{
    return false;
}

Outcome install(const Options&)
{
    return {Outcome::failed, {}};
}

Outcome uninstall()
{
    return {Outcome::failed, {}};
}

} // namespace agent::serviceInstallation
