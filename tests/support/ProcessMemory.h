// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_PROCESSMEMORY_H
#define VIGIL_SUPPORT_PROCESSMEMORY_H

#include <QtGlobal>

#include <optional>

namespace support {

/// The memory that the process has in use, in kB. Nothing where the system does not show it in /proc.
///
/// Any thread. Failure: nothing, as for a process that is gone.
std::optional<qint64> residentKilobytes(qint64 processId);

} // namespace support

#endif
