// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTING_FRAME_H
#define VIGIL_TESTING_FRAME_H

#include <cstddef>
#include <cstdint>
#include <string>

/// The wire protocol of docs/wire-protocol.md, implemented a second time: tests of the library must not
/// depend on the library's own code, nor tests of an application on Qt.
namespace vigil::test {

struct Frame
{
    int connection = 0; ///< its number, from 1; not sent
    std::int16_t dataType = 0;
    std::int64_t callbackId = 0;
    std::uint64_t counter = 0;
    std::uint64_t updateCounter = 0;
    std::string payload;
};

std::string encode(const Frame& frame);

/// Cuts a stream of bytes into frames.
class FrameCutter
{
public:
    void append(const char* bytes, std::size_t size) { m_buffer.append(bytes, size); }

    /// False if the next frame is not complete, or no frame.
    bool take(Frame& frame);

    /// Frees the memory of the taken frames. Call it once per burst.
    void discardTaken();

private:
    std::string m_buffer;
    std::size_t m_position = 0; // of the first byte not taken
};

} // namespace vigil::test

#endif
