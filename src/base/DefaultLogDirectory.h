// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_DEFAULTLOGDIRECTORY_H
#define VIGIL_BASE_DEFAULTLOGDIRECTORY_H

#include <QString>

namespace base {

/// The directory of the log files: the first writable one of VIGIL_LOG_DIR, the product's data directories
/// and the temporary directory. Leaves a start record in it.
QString defaultLogDirectory();

} // namespace base

#endif
