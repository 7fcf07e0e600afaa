// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "testing/Frame.h"

#include <string_view>

#include "testing/BigEndian.h"

namespace vigil::test {

namespace {

constexpr std::uint64_t magic = 0xABBA08154711F007;
constexpr std::size_t prefixSize = 16;
constexpr std::size_t remainderSize = 26;
constexpr std::size_t headerSize = prefixSize + remainderSize;

} // namespace

std::string encode(const Frame& frame)
{
    return toBigEndian(magic, 8) + toBigEndian(remainderSize + frame.payload.size(), 8) +
           toBigEndian(static_cast<std::uint16_t>(frame.dataType), 2) +
           toBigEndian(static_cast<std::uint64_t>(frame.callbackId), 8) + toBigEndian(frame.counter, 8) +
           toBigEndian(frame.updateCounter, 8) + frame.payload;
}

bool FrameCutter::take(Frame& frame)
{
    const std::string_view rest = std::string_view(m_buffer).substr(m_position);
    if (rest.size() < headerSize || fromBigEndian(rest, 8) != magic)
        return false;
    const std::uint64_t length = fromBigEndian(rest.substr(8), 8);
    if (length < remainderSize || length > rest.size() - prefixSize)
        return false;
    frame.dataType = static_cast<std::int16_t>(fromBigEndian(rest.substr(16), 2));
    frame.callbackId = static_cast<std::int64_t>(fromBigEndian(rest.substr(18), 8));
    frame.counter = fromBigEndian(rest.substr(26), 8);
    frame.updateCounter = fromBigEndian(rest.substr(34), 8);
    frame.payload = rest.substr(headerSize, length - remainderSize);
    m_position += prefixSize + length;
    return true;
}

void FrameCutter::discardTaken()
{
    m_buffer.erase(0, m_position);
    m_position = 0;
}

} // namespace vigil::test
