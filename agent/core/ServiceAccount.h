// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_SERVICEACCOUNT_H
#define VIGIL_AGENT_CORE_SERVICEACCOUNT_H

#include <QString>

/// The agent as a Windows service, and the account that Windows keeps for a service of this name. The account
/// has no password, and only the rights granted to it.
namespace agent::serviceAccount {

/// The service's name.
QString service();

/// As the service manager wants it, for example "NT SERVICE\name".
QString name();

/// The account's security identifier in text. Windows derives it from the name of the service, so it is known
/// before the service exists.
QString sid(const QString& service);

} // namespace agent::serviceAccount

#endif
