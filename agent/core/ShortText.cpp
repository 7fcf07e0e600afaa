// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/ShortText.h"

namespace agent {

std::string shortened(std::string text, size_t maxBytes)
{
    if (text.size() <= maxBytes)
        return text;
    const auto isInside = [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0U) == 0x80U; };
    size_t end = maxBytes;
    while (end > 0 && isInside(text[end]))
        --end;
    text.resize(end > 0 ? end : maxBytes);
    return text;
}

} // namespace agent
