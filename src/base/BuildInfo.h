// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_BUILDINFO_H
#define VIGIL_BASE_BUILDINFO_H

/// What the build says of itself. Constants; any thread.
namespace base::buildInfo {

/// The package's name, as log lines and the log directory show it.
const char* packageName();

/// Three-part version, a dot and the build stamp: year, month, day and hour, UTC.
const char* version();

/// Year, month and day, UTC.
const char* buildDate();

} // namespace base::buildInfo

#endif
