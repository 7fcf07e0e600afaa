// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HEALTH_LIVECHECKS_H
#define VIGIL_HEALTH_LIVECHECKS_H

/// Counts the health checks of the process: the first one starts the library, the last one stops it.
///
/// Threads: any. A thread waits while another one starts or stops the library.
class LiveChecks
{
public:
    static void add();
    static void remove();
};

#endif
