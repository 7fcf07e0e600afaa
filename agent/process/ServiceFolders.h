// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_SERVICEFOLDERS_H
#define VIGIL_AGENT_PROCESS_SERVICEFOLDERS_H

#include <QString>

/// Where the Windows service keeps its files, usually below C:\ProgramData\Vigil.
namespace agent::serviceFolders {

QString root();
QString configFile();
QString state();
QString log();

} // namespace agent::serviceFolders

#endif
