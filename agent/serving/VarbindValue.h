// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_VARBINDVALUE_H
#define VIGIL_AGENT_SERVING_VARBINDVALUE_H

#include <QByteArray>
#include <QDateTime>

#include "agent/cells/Cell.h"
#include "agent/core/ObjectId.h"
#include "agent/netsnmp/NetSnmp.h"

// Conversion between the agent's values and Net-SNMP's varbinds.

namespace agent {

ObjectId objectIdOf(const netsnmp_variable_list& varbind);

/// Reads what a manager wants to set. Returns an SNMP error status if no cell can have such a value.
int readValue(const netsnmp_variable_list& varbind, CellValue& value);

void putValue(netsnmp_variable_list* varbind, const CellValue& value);

/// Sends the lower 32 bits, so counters wrap.
void putNumber(netsnmp_variable_list* varbind, u_char type, quint64 value);

/// Stops at the largest value, as a gauge does.
void putGauge(netsnmp_variable_list* varbind, quint64 value);

void putText(netsnmp_variable_list* varbind, const QByteArray& text);

/// DateAndTime in UTC; eight zero bytes for a null time.
void putTime(netsnmp_variable_list* varbind, const QDateTime& time);

} // namespace agent

#endif
