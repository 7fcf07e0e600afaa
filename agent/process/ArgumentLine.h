// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_ARGUMENTLINE_H
#define VIGIL_AGENT_PROCESS_ARGUMENTLINE_H

#include <QString>
#include <QStringList>

namespace agent {

/// The arguments as one command line, from which Windows programs get the same arguments. The first one, the
/// program, must not contain quotes.
QString argumentLine(const QStringList& arguments);

} // namespace agent

#endif
