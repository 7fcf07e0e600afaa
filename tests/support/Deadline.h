// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_DEADLINE_H
#define VIGIL_SUPPORT_DEADLINE_H

namespace support {

/// The default time-out of a wait. Only a failing test waits that long, so the time suits a machine with ten
/// times more work than processors.
constexpr int deadlineMs = 60'000;

} // namespace support

#endif
