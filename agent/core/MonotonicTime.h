// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_MONOTONICTIME_H
#define VIGIL_AGENT_CORE_MONOTONICTIME_H

#include <QtGlobal>

namespace agent {

/// Milliseconds the machine has been awake since an arbitrary moment. Time in suspend does not count: no
/// application could update its checks meanwhile. One source file for each system.
qint64 monotonicMs();

} // namespace agent

#endif
