// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HEALTH_LIVECHECKS_H
#define VIGIL_HEALTH_LIVECHECKS_H

/// Counts the health checks of the process: the first one starts the library, the last one stops it.
///
/// Threads: not atomic; one thread at a time creates and destroys checks.
class LiveChecks
{
public:
    static void add();
    static void remove();
};

#endif
