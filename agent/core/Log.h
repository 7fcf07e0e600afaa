// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_LOG_H
#define VIGIL_AGENT_CORE_LOG_H

#include <QString>

/// The agent's own messages: one line per event on standard error, whatever the text holds.
///
/// Threads: the agent has one. Failure: a line that cannot be written is lost.
namespace agent::log {

/// Also writes the lines of detail(). Off at the start.
void setVerbose(bool isVerbose);

/// Something that stops the agent or an operation that an operator asked for.
void error(const QString& message);

/// Something that an operator should look at; the agent goes on.
void warning(const QString& message);

/// A step in the agent's life.
void info(const QString& message);

bool isVerbose();

/// Connections, cells and SETs one by one; nothing unless verbose. makeText returns the message and is called
/// only when it is wanted, since there is one for every value that arrives.
template <typename MakeText>
void detail(MakeText makeText)
{
    if (isVerbose())
        info(makeText());
}

} // namespace agent::log

#endif
