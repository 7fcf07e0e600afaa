// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_LOG_H
#define VIGIL_AGENT_CORE_LOG_H

#include <QString>

#include <functional>

#include "agent/core/User.h"

/// The agent's messages. Each event is one line, even if its text has line breaks. Long lines are cut. They
/// go to standard error, with priorities if that is the journal, or to a sink.
///
/// Failure: a line that cannot be written at once is lost. The next one written says how many were lost.
namespace agent::log {

enum class Severity { Error, Warning, Info, Debug };

/// Takes the messages in place of standard error. False if one is lost. Null restores standard error.
using Sink = std::function<bool(Severity, const QString&)>;
void setSink(Sink sink);

/// Turns the lines of detail() on. They are off at the start.
void setVerbose(bool isVerbose);

/// Asked before each line about an application of a user. Null lets every line pass.
using Gate = std::function<bool(const User&)>;
void setGate(Gate gate);

/// The agent stops, or cannot do what the operator asked for.
void error(const QString& message);

/// The operator should have a look. The agent goes on.
void warning(const QString& message);

/// The same about an application of this user.
void warning(const User& user, const QString& message);

/// A step in the agent's life.
void info(const QString& message);

bool isVerbose();
bool isVerbose(const User& user);

/// For detail().
void debug(const QString& message);

/// Single connections, cells and SETs. makeText returns the message; it is called only if the log is verbose,
/// since every value has a message.
template <typename MakeText>
void detail(MakeText makeText)
{
    if (isVerbose())
        debug(makeText());
}

/// The same about an application of this user.
template <typename MakeText>
void detail(const User& user, MakeText makeText)
{
    if (isVerbose(user))
        debug(makeText());
}

} // namespace agent::log

#endif
