// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_PUBLICATIONLOG_H
#define VIGIL_CLIENT_PUBLICATIONLOG_H

#include <QVariant>
#include <QtGlobal>

#include <cstddef>
#include <type_traits>
#include <vector>

#include "client/Publication.h"
#include "types/OidArcs.h"

/// Publications in their order, at low cost for two threads.
///
/// All publications share three blocks of memory, and the thread that has read them frees a block as a whole.
/// With blocks of its own for each, one thread allocates what the other one frees, and both wait for each
/// other inside malloc().
class PublicationLog
{
public:
    /// If memory runs out, the log stays as it is.
    void append(const Publication& publication);

    std::size_t size() const { return m_entries.size(); }
    Publication at(std::size_t index) const;

    /// The memory in use, without that kept for growth.
    std::size_t bytes() const;

private:
    enum class Content { Number, Text, Withdrawal, TreeWithdrawal };

    /// A part of a block.
    struct Slice
    {
        std::size_t first;
        std::size_t count;
    };

    struct Entry
    {
        Content content;
        bool notify;
        int number;
        Slice arcs;
        Slice text;
    };
    static_assert(std::is_trivial_v<Entry>, "growth moves trivial types as one block, others one by one");

    static Content contentOf(const Publication& publication);
    vigil::OidArcs arcsOf(const Entry& entry) const;
    QVariant valueOf(const Entry& entry) const;

    std::vector<Entry> m_entries;
    vigil::OidArcs m_arcs;
    std::vector<ushort> m_texts; // UTF-16; QChar is not trivial
};

#endif
