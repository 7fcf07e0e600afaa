// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_SERVICEINSTALLATION_H
#define VIGIL_AGENT_PROCESS_SERVICEINSTALLATION_H

#include <QString>

#include "agent/process/Options.h"

/// The agent as a service that the system starts: on Windows, where each service is registered. One source
/// file for Windows, and one for systems where packages do this.
namespace agent::serviceInstallation {

/// False: the command line refuses the options about it.
bool isSupported();

struct Outcome
{
    static constexpr int failed = 1;
    static constexpr int rightsLacking = 3;
    static constexpr int existsAlready = 4;
    static constexpr int doesNotExist = 5;

    int exitCode = 0;
    QString text; ///< for the operator: what was done, or why not
};

/// Makes the service and what it needs: folders, the configuration, the source of its lines in the event log.
/// The service gets options.serviceArguments. It starts with the system, not at once.
Outcome install(const Options& options);

/// Stops the service and removes it. The configuration and the state stay.
Outcome uninstall();

} // namespace agent::serviceInstallation

#endif
