// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_QUEUEOVERFLOW_H
#define VIGIL_CLIENT_QUEUEOVERFLOW_H

#include <QVariant>

#include <cstddef>
#include <list>
#include <unordered_set>

#include <vigil/Oid.h>

#include "types/OidArcs.h"

/// The publications that do not fit into the client's event queue.
///
/// Keeps all of them, in their order, up to a number of bytes. Beyond that it keeps the last one for each
/// identifier, so it cannot outgrow the cells of the application. An entry takes a sixth of the memory of a
/// queued call.
class QueueOverflow
{
public:
    struct Publication
    {
        enum class Kind { Value, TreeWithdrawal };

        Kind kind;
        vigil::OidArcs oid;
        QVariant value; ///< invalid: withdrawn
        bool notify;
    };
    using Publications = std::list<Publication>;

    /// Keeps all publications up to this number of bytes.
    explicit QueueOverflow(int bytesForAll) : m_bytesLeft(bytesForAll) {}

    /// An invalid value withdraws oid. If it replaces an earlier value, a wish for a notification passes on.
    void set(const vigil::Oid& oid, const QVariant& value, bool notify, int bytes);

    /// Replaces the publications in tree. Looks at all of them, because nothing in the library withdraws
    /// trees.
    void withdrawTree(const vigil::Oid& tree);

    bool isEmpty() const { return m_publications.empty(); }

    /// Returns all publications in their order, and forgets them.
    Publications takeAll();

private:
    using Position = Publications::iterator;

    struct Hash
    {
        std::size_t operator()(Position position) const { return vigil::hashOf(position->oid); }
    };
    struct HasSameOid
    {
        bool operator()(Position left, Position right) const { return left->oid == right->oid; }
    };

    using Last = std::unordered_set<Position, Hash, HasSameOid>;

    void replace(Last::iterator last, Publications& next);

    Publications m_publications;
    Last m_last;     // the last value of each identifier
    int m_bytesLeft; // negative: only the last values are kept
};

#endif
