// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_PUBLISHER_H
#define VIGIL_BENCHMARKS_PUBLISHER_H

#include <cstdint>
#include <string>

#include <vigil/Oid.h>

/// An application that publishes short texts in vigilPerfDataTable, and stays connected while the object
/// lives. It is not the library: many of them run in one process.
///
/// Failure: exits with a message.
class Publisher
{
public:
    /// Publishes this number of cells, the first one with the number first.
    Publisher(std::uint16_t agentPort, int cells, int first = 0);
    ~Publisher();
    Publisher(const Publisher&) = delete;
    Publisher& operator=(const Publisher&) = delete;

    /// Publishes all cells again.
    void publish();

    static std::string enterprise() { return "1.3.6.1.4.1.32473."; }

    /// The identifier of a cell below the enterprise, and the whole one.
    static std::string cell(int number);
    static vigil::Oid oid(int number);

    /// What a cell shows.
    static std::string text(int number) { return std::to_string(number); }

private:
    const int m_first;
    const int m_cells;
    std::uint64_t m_frames = 0;
    int m_socket;
};

#endif
