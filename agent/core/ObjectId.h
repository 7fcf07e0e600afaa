// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_OBJECTID_H
#define VIGIL_AGENT_CORE_OBJECTID_H

#include <QString>

#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace agent {

/// An object identifier as the agent holds it: all arcs in a row, ordered as SNMP orders them.
///
/// Purpose: keys of the cells. A walk over a large table compares identifiers all the time, which the
/// application's linked vigil::Oid is not made for.
using ObjectId = std::vector<unsigned int>;

/// The subtree that the agent serves; identifiers travel on the application's connection relative to it.
const ObjectId& enterpriseRoot();

/// The part of it that VIGIL-MIB describes.
const ObjectId& vigilMibRoot();

/// The part of it that is the agent's own, where applications cannot publish.
const ObjectId& agentMibRoot();

/// The most arcs that SNMP carries in one identifier.
constexpr size_t maxArcs = 128;

/// The full identifier for a relative one in dotted text; the empty text is the root itself. Nothing when the
/// text is anything else than numbers between dots, or a number is above 4294967295.
std::optional<ObjectId> fromRelativeText(const std::string& text);

/// The identifier that a full dotted text names, a leading dot allowed. Nothing when the text is anything
/// else.
std::optional<ObjectId> fromFullText(const std::string& text);

/// The dotted text of id relative to the root. id lies below the root.
std::string toRelativeText(const ObjectId& id);

/// The full dotted text, for messages.
QString toText(const ObjectId& id);

/// tree with more arcs at its end.
ObjectId below(const ObjectId& tree, std::initializer_list<unsigned int> arcs);

bool isInTree(const ObjectId& tree, const ObjectId& id);

} // namespace agent

#endif
