// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_STANDARDERROR_H
#define VIGIL_AGENT_CORE_STANDARDERROR_H

#include <QByteArray>
#include <QString>

#include "agent/core/Error.h"

/// Standard error as the system has it. A reader that stalls, such as a stopped terminal, must not stop the
/// agent.
namespace agent::standardError {

/// A longer line might wait for its reader, or mix with the lines of other programs.
constexpr int maxLine = 4096;

/// Writes a line of at most maxLine bytes, without waiting. False if it is lost.
bool write(const QByteArray& line);

/// Waits a moment for lines still on their way. For the end of the process.
void waitUntilWritten();

/// True if the host's journal reads it: a number in front of a line is then its priority.
bool isJournal();

} // namespace agent::standardError

namespace agent::standardOutput {

/// Prints the answer to the operator's command. Fails if not all of it is written, for example to a full
/// disk.
Error print(const QString& text);

} // namespace agent::standardOutput

#endif
