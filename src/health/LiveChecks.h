// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HEALTH_LIVECHECKS_H
#define VIGIL_HEALTH_LIVECHECKS_H

/// Counts the living health checks of the process: the first one starts the service client, the last one
/// stops it. Not atomic; checks are created and destroyed by one thread at a time.
class LiveChecks
{
public:
    static void add();
    static void remove();
};

#endif
