// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_RECORDCHECK_H
#define VIGIL_AGENT_APPLICATIONS_RECORDCHECK_H

#include <QByteArray>
#include <QString>

namespace agent {

/// Tells what is wrong with the encoding of a record of that data type; an empty text means nothing.
///
/// The records' own decoder forgives bytes that end early, as an application may. The agent must not: a
/// record cut short would create a cell under a shortened identifier. So before a record is decoded here,
/// every property must be there as a whole, and every text in it must end where its property ends.
///
/// Any thread. The bytes are not trusted.
QString recordProblem(int dataType, const QByteArray& payload);

} // namespace agent

#endif
