// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_FILERIGHTS_H
#define VIGIL_AGENT_CORE_FILERIGHTS_H

#include <QByteArray>
#include <QString>

#include "agent/core/Error.h"

/// Rights to files and folders on Windows. Administrators, the system, the agent's service account and the
/// user of this process are trusted; everyone else is a stranger.
namespace agent::fileRights {

/// What the service's account may do with a new file or folder. Administrators and the system may do all.
enum class ServiceMay { Read, Change };

/// Sets stranger to the name of one who may read or change the file or owns it; empty if there is none.
/// Fails if the system does not tell.
Error findStranger(const QString& path, QString& stranger);

/// Makes a folder for the trusted alone. One that exists stays if no stranger has rights to it.
Error makeFolder(const QString& path, ServiceMay may);

/// Makes a file for the trusted alone. It must not exist.
Error makeFile(const QString& path, const QByteArray& contents, ServiceMay may);

/// The user of this process as text, for a command that grants rights. Empty if the system does not tell.
QString ownSid();

} // namespace agent::fileRights

#endif
