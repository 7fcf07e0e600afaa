// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_FUZZ_FUZZER_H
#define VIGIL_TESTS_FUZZ_FUZZER_H

#include <cstddef>
#include <cstdint>

/// libFuzzer's entry point, defined by each fuzzer. Aborts if the code under test breaks a promise; returns
/// 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#endif
