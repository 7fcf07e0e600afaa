// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_OIDS_H
#define VIGIL_SUPPORT_OIDS_H

#include <string>

#include <vigil/Oid.h>

namespace support {

inline vigil::Oid oid(const char* text)
{
    return vigil::Oid::fromStdString(text);
}

/// A relative identifier in full.
inline vigil::Oid below(const std::string& relative)
{
    return vigil::Oid::fromStdString("1.3.6.1.4.1.32473." + relative);
}

} // namespace support

#endif
