// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTING_BIGENDIAN_H
#define VIGIL_TESTING_BIGENDIAN_H

#include <cstdint>
#include <string>
#include <string_view>

namespace vigil::test {

/// The first bytes of text as a number; text must have them.
inline std::uint64_t fromBigEndian(std::string_view text, int bytes)
{
    std::uint64_t number = 0;
    for (int i = 0; i < bytes; ++i)
        number = number << 8 | static_cast<unsigned char>(text[static_cast<std::size_t>(i)]);
    return number;
}

inline std::string toBigEndian(std::uint64_t number, int bytes)
{
    std::string text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        text += static_cast<char>(number >> shift & 0xFF);
    return text;
}

} // namespace vigil::test

#endif
