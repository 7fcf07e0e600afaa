// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_C_UTF8_H
#define VIGIL_C_UTF8_H

namespace c {

/// True if text is UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
bool isUtf8(const char* text);

} // namespace c

#endif
