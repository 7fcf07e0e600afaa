// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_PRINTABLE_H
#define VIGILCTL_PRINTABLE_H

#include <QString>

namespace vigilctl {

/// Without control and format characters: an application's text must not control the terminal.
QString printable(const QString& text);

} // namespace vigilctl

#endif
