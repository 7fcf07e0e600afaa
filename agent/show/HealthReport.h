// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SHOW_HEALTHREPORT_H
#define VIGIL_AGENT_SHOW_HEALTHREPORT_H

#include <QString>

#include "agent/netsnmp/SnmpReader.h"

namespace agent {

/// The objects of VIGIL-AGENT-MIB as an operator reads them without SNMP tools: the health checks, the worst
/// first, with their metrics, and the applications.
///
///     WARNING - 0 critical, 1 warning, 0 unknown, 1 ok
///
///     WARNING   shop/orders since 2026-01-31 12:34:56 UTC: Orders - out of warning range: pending is 950.
///       WARNING   pending = 950
///       OK        rate = 12 /s
///     OK        shop/disk since 2026-01-31 12:30:00 UTC: The disk
///
///     application 1 (shop-server, uid 1001, pid 4711, 127.0.0.1:40000) is connected, 24 cells
///
/// The texts hold no control characters, also if the agent sends some.
QString healthReport(const ServedObjects& objects);

} // namespace agent

#endif
