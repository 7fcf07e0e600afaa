// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_TERMINAL_H
#define VIGILCTL_TERMINAL_H

namespace vigilctl {

/// True if standard output is a terminal.
bool isTerminal();

} // namespace vigilctl

#endif
