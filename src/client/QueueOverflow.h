// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_QUEUEOVERFLOW_H
#define VIGIL_CLIENT_QUEUEOVERFLOW_H

#include <cstddef>

#include "client/LatestPublications.h"
#include "client/Publication.h"
#include "client/PublicationLog.h"

/// The publications that do not fit into the client's event queue.
///
/// Keeps all of them, in their order, up to a number of bytes. From then on it keeps the last one for each
/// identifier, so its memory is bounded. It comes to that only while the client is stalled for minutes, or
/// beside tens of thousands of metrics, so most publications do without an index.
class QueueOverflow
{
public:
    explicit QueueOverflow(std::size_t bytesForAll) : m_bytesForAll(bytesForAll) {}

    /// If memory runs out, nothing changes.
    void add(Publication publication);

    bool isEmpty() const { return m_all.size() == 0 && m_latest.all().empty(); }

    // First all publications, then the latest.
    const PublicationLog& all() const { return m_all; }
    const LatestPublications& latest() const { return m_latest; }

private:
    std::size_t m_bytesForAll;
    PublicationLog m_all;
    LatestPublications m_latest;
};

#endif
