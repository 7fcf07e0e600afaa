// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_PENDINGSENDS_H
#define VIGIL_CLIENT_PENDINGSENDS_H

#include <map>
#include <utility>

#include <vigil/Oid.h>

#include "types/OidArcs.h"

/// What the service has yet to be told on this connection: identifiers whose state the client sends from its
/// ValueCache once the connection takes it.
///
/// One entry for each identifier, in the order of the identifiers, so a withdrawn tree goes before the values
/// published in it later.
class PendingSends
{
public:
    struct Wish
    {
        bool notify = false;
        bool withdrawTree = false; ///< before the value of the identifier itself, if it has one again
    };
    using Entry = std::pair<vigil::OidArcs, Wish>;

    /// A wish for a notification stays until it is sent.
    void add(const vigil::OidArcs& oid, bool notify);

    /// Replaces tree and its descendants by the withdrawal of tree. A value of tree itself may be added
    /// later.
    void addTree(const vigil::Oid& tree);

    void remove(const vigil::OidArcs& oid) { m_entries.erase(oid); }
    void clear() { m_entries.clear(); }

    bool isEmpty() const { return m_entries.empty(); }
    int size() const { return static_cast<int>(m_entries.size()); }
    int notifications() const;

    /// The first identifier. Only if there is one.
    Entry first() const { return *m_entries.begin(); }

private:
    std::map<vigil::OidArcs, Wish> m_entries;
};

#endif
