// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_HTTP_TURN_H
#define VIGIL_AGENT_HTTP_TURN_H

#include <QElapsedTimer>

namespace agent {

/// How much of long replies one turn of the event loop makes. All replies of a server share it, so managers
/// wait for one turn at most, however many readers there are.
///
/// The limits count work. The time is a limit for slow machines on top of them.
class Turn
{
public:
    static constexpr qint64 maxNs = 2'000'000;
    static constexpr int maxPieces = 100;
    static constexpr int maxBytes = 128 * 1024; ///< the last piece may exceed it

    void start()
    {
        m_since.start();
        m_pieces = 0;
        m_bytes = 0;
    }

    /// A piece of this many bytes has been made.
    void count(int bytes)
    {
        ++m_pieces;
        m_bytes += bytes;
    }

    bool isOver() const
    {
        return m_pieces >= maxPieces || m_bytes >= maxBytes || m_since.nsecsElapsed() >= maxNs;
    }

private:
    QElapsedTimer m_since;
    int m_pieces = 0;
    int m_bytes = 0;
};

} // namespace agent

#endif
