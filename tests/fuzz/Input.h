// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_FUZZ_INPUT_H
#define VIGIL_TESTS_FUZZ_INPUT_H

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace fuzz {

/// The input of a fuzzer, read from front to back. At its end every byte is 0 and every piece empty.
class Input
{
public:
    Input(const std::uint8_t* data, std::size_t size)
        : m_bytes(reinterpret_cast<const char*>(data), static_cast<int>(size))
    {}

    bool isAtEnd() const { return m_position >= m_bytes.size(); }
    int byte() { return isAtEnd() ? 0 : static_cast<std::uint8_t>(m_bytes[m_position++]); }

    QByteArray take(int count)
    {
        const QByteArray bytes = m_bytes.mid(m_position, count);
        m_position += bytes.size();
        return bytes;
    }

private:
    const QByteArray m_bytes;
    int m_position = 0;
};

inline void require(bool holds)
{
    if (!holds)
        std::abort();
}

} // namespace fuzz

#endif
