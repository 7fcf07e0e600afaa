// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_VALUECACHE_H
#define VIGIL_CLIENT_VALUECACHE_H

#include <QVariant>

#include <map>

#include <vigil/Oid.h>

#include "types/OidArcs.h"

/// Everything the application has published: what the client sends again after a reconnect.
///
/// One entry for each identifier, in the order of the identifiers, which is the order of the replay. An
/// invalid QVariant means unset; the replay unsets the identifier again. Only removeTree() removes entries.
class ValueCache
{
public:
    /// An invalid value unsets oid.
    void set(const vigil::OidArcs& oid, const QVariant& value) { m_values[oid] = value; }

    /// Removes tree and its descendants, and returns how many entries these were. If there was a descendant,
    /// tree stays as unset: the replay repeats the removal.
    int removeTree(const vigil::Oid& tree);

    /// Invalid for an identifier that is unset, or unknown.
    QVariant value(const vigil::OidArcs& oid) const;

    auto begin() const { return m_values.begin(); }
    auto end() const { return m_values.end(); }

private:
    std::map<vigil::OidArcs, QVariant> m_values;
};

#endif
