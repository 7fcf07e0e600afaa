// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "c/Utf8.h"

#include <cstdint>

namespace c {

namespace {

/// The bytes of a character: how many follow the first one, and its bounds as a number.
struct Form
{
    int following;
    std::uint32_t firstBits;
    std::uint32_t smallest;
};

bool findForm(unsigned char first, Form& form)
{
    if (first < 0x80)
        form = {0, first, 0};
    else if ((first & 0xE0U) == 0xC0U)
        form = {1, first & 0x1FU, 0x80};
    else if ((first & 0xF0U) == 0xE0U)
        form = {2, first & 0x0FU, 0x800};
    else if ((first & 0xF8U) == 0xF0U)
        form = {3, first & 0x07U, 0x10000};
    else
        return false;
    return true;
}

bool isCharacter(std::uint32_t number)
{
    const bool isSurrogate = number >= 0xD800 && number <= 0xDFFF;
    return number <= 0x10FFFF && !isSurrogate;
}

} // namespace

bool isUtf8(const char* text)
{
    while (*text != '\0') {
        Form form{};
        if (!findForm(static_cast<unsigned char>(*text++), form))
            return false;
        std::uint32_t number = form.firstBits;
        for (int i = 0; i < form.following; ++i) {
            const auto byte = static_cast<unsigned char>(*text); // the NUL at the end fails, too
            if ((byte & 0xC0U) != 0x80U)
                return false;
            number = (number << 6U) | (byte & 0x3FU);
            ++text;
        }
        if (number < form.smallest || !isCharacter(number))
            return false;
    }
    return true;
}

} // namespace c
