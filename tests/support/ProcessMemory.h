// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_PROCESSMEMORY_H
#define VIGIL_SUPPORT_PROCESSMEMORY_H

#include <QtGlobal>

#include <optional>

namespace support {

/// The memory in use by the process, in kB; nothing without /proc or once the process has ended. Any thread.
std::optional<qint64> residentKilobytes(qint64 processId);

} // namespace support

#endif
