// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_FUZZ_RECEIVEPATH_H
#define VIGIL_TESTS_FUZZ_RECEIVEPATH_H

#include <cstddef>
#include <cstdint>

/// Feeds the agent's receive path, from the bytes of applications to the cells that managers read, and aborts
/// when the cells are not what they must be afterwards. This is libFuzzer's entry point; returns 0.
///
/// The first byte of the input says how it is meant:
///
/// - even: the rest is what one application sends, cut into pieces of as many bytes as the first byte says;
/// - odd: the rest is a list of steps. Each begins with a byte whose remainder by 8 says what happens: 6 lets
///   time pass, 7 ends the connection and makes the next one, anything else sends a frame. Its header is made
///   here, so that the search need not find out what a counter is.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#endif
