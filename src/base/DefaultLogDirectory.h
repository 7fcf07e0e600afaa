// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_DEFAULTLOGDIRECTORY_H
#define VIGIL_BASE_DEFAULTLOGDIRECTORY_H

#include <QString>

namespace base {

struct LogDirectoryChoice
{
    QString directory;
    QString problem; // why it is not VIGIL_LOG_DIR, if that is set
};

/// The directory of the log files: the first writable one of VIGIL_LOG_DIR, the product's data directories
/// and the temporary directory. Leaves a start record in it. A directory that other users can change does not
/// count. Set-user-id programs ignore VIGIL_LOG_DIR and TMPDIR.
LogDirectoryChoice defaultLogDirectory();

} // namespace base

#endif
