// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_COMMANDLINE_H
#define VIGIL_AGENT_PROCESS_COMMANDLINE_H

#include <QString>
#include <QStringList>

#include "agent/core/Error.h"
#include "agent/process/Options.h"

namespace agent {

/// Reads the arguments; the first is the program's name. Checks every value, so the rest of the agent can
/// rely on them.
///
/// options: the defaults on entry; the arguments replace some of them.
/// output: set for --help and --version. The caller prints it and does not run the agent.
Error readCommandLine(const QStringList& arguments, Options& options, QString& output);

} // namespace agent

#endif
