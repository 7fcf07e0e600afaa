// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_CONNECTEDLIBRARY_H
#define VIGIL_BENCHMARKS_CONNECTEDLIBRARY_H

#include <cstdlib>
#include <memory>
#include <string>

#include "benchmarks/FrameSink.h"
#include "benchmarks/SampleCheck.h"

/// The library, connected to a sink. Its own check starts it, and ends it last.
class ConnectedLibrary
{
public:
    ConnectedLibrary()
    {
        setenv("VIGIL_SERVICE_PORT", std::to_string(m_sink.port()).c_str(), 1);
        m_check = std::make_unique<SampleCheck>(1, "start");
        m_sink.waitForFrames(static_cast<std::uint64_t>(m_check->allCells() - 7));
        m_sink.waitUntilQuiet();
    }
    ConnectedLibrary(const ConnectedLibrary&) = delete;
    ConnectedLibrary& operator=(const ConnectedLibrary&) = delete;

    FrameSink& sink() { return m_sink; }

private:
    FrameSink m_sink;
    std::unique_ptr<SampleCheck> m_check; // destroyed first
};

#endif
