// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_LOG_H
#define VIGIL_AGENT_CORE_LOG_H

#include <QString>

/// The agent's messages. Each event is one line on standard error, even if its text has line breaks.
///
/// Failure: if the line cannot be written, it is lost.
namespace agent::log {

/// Turns the lines of detail() on. They are off at the start.
void setVerbose(bool isVerbose);

/// The agent stops, or cannot do what the operator asked for.
void error(const QString& message);

/// The operator should have a look. The agent goes on.
void warning(const QString& message);

/// A step in the agent's life.
void info(const QString& message);

bool isVerbose();

/// Single connections, cells and SETs. makeText returns the message; it is called only if the log is verbose,
/// since every value that arrives has a message.
template <typename MakeText>
void detail(MakeText makeText)
{
    if (isVerbose())
        info(makeText());
}

} // namespace agent::log

#endif
