// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/QueueOverflow.h"

#include <algorithm>
#include <utility>

using vigil::Oid;
using vigil::OidArcs;

void QueueOverflow::set(const Oid& oid, const QVariant& value, bool notify)
{
    Value& entry = m_values[oid.toStdVector()];
    entry.value = value;
    entry.notify = entry.notify || notify;
    entry.order = ++m_lastOrder;
}

void QueueOverflow::withdrawTree(const Oid& tree)
{
    const OidArcs arcs = tree.toStdVector();
    vigil::eraseTree(m_values, arcs);
    vigil::eraseTree(m_trees, arcs);
    m_trees[arcs] = ++m_lastOrder;
}

std::vector<QueueOverflow::Publication> QueueOverflow::takeAll()
{
    using Kind = Publication::Kind;
    std::vector<Publication> all;
    all.reserve(m_values.size() + m_trees.size());
    for (const auto& [tree, order] : m_trees) // first: memory may run out
        all.push_back({Kind::TreeWithdrawal, tree, QVariant(), false, order});
    while (!m_values.empty()) {
        auto node = m_values.extract(m_values.begin());
        const Value& entry = node.mapped();
        all.push_back({Kind::Value, std::move(node.key()), entry.value, entry.notify, entry.order});
    }
    m_trees.clear();
    std::sort(all.begin(), all.end(),
              [](const Publication& left, const Publication& right) { return left.order < right.order; });
    return all;
}
