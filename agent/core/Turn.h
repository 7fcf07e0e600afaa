// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_TURN_H
#define VIGIL_AGENT_CORE_TURN_H

#include <QElapsedTimer>

namespace agent {

/// How much of a long job one turn of the event loop does, so managers wait for one turn at most. All replies
/// of a server share one, however many readers there are.
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

    /// A piece is done. Of a reply, it has this many bytes.
    void count(int bytes = 0)
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
