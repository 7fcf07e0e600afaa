// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_PUBLISHER_H
#define VIGIL_BENCHMARKS_PUBLISHER_H

#include <cstdint>
#include <string>

/// An application that has published short texts in vigilPerfDataTable, and stays connected while the object
/// lives. It is not the library: two of them run in one process.
///
/// Failure: exits with a message.
class Publisher
{
public:
    Publisher(std::uint16_t agentPort, int cells);
    ~Publisher();
    Publisher(const Publisher&) = delete;
    Publisher& operator=(const Publisher&) = delete;

    /// The identifier of a cell below the enterprise, and its text.
    static std::string cell(int number);
    static std::string text(int number) { return std::to_string(number); }

private:
    int m_socket;
};

#endif
