// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_BUILDINFO_H
#define VIGIL_BASE_BUILDINFO_H

/// Name, version and date of this build.
namespace base::buildInfo {

/// The library's package name, used in log lines and for the log directory.
const char* packageName();

/// Three-part version, a dot and the build stamp: year, month, day and hour, UTC.
const char* version();

/// Year, month and day, UTC.
const char* buildDate();

} // namespace base::buildInfo

#endif
