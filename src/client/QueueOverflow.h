// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_QUEUEOVERFLOW_H
#define VIGIL_CLIENT_QUEUEOVERFLOW_H

#include <QVariant>
#include <QtGlobal>

#include <map>
#include <vector>

#include <vigil/Oid.h>

#include "types/OidArcs.h"

/// The publications that do not fit into the client's event queue.
///
/// Keeps the last one for each identifier, so it cannot outgrow the cells of the application.
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
        quint64 order;
    };

    /// An invalid value withdraws oid. A wish for a notification passes on to later values.
    void set(const vigil::Oid& oid, const QVariant& value, bool notify);

    /// Drops all publications in tree.
    void withdrawTree(const vigil::Oid& tree);

    bool isEmpty() const { return m_values.empty() && m_trees.empty(); }

    /// Returns all publications in their order, and forgets them, unless memory runs out.
    std::vector<Publication> takeAll();

private:
    struct Value
    {
        QVariant value;
        bool notify = false;
        quint64 order = 0;
    };

    std::map<vigil::OidArcs, Value> m_values;
    std::map<vigil::OidArcs, quint64> m_trees; // to the order of the last withdrawal
    quint64 m_lastOrder = 0;
};

#endif
