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

/// An object identifier: all arcs in a vector, in the order of SNMP. It is the key of a cell; a walk over a
/// large table compares identifiers all the time, so the linked vigil::Oid of the library will not do.
using ObjectId = std::vector<unsigned int>;

/// The enterprise's subtree. On an application's connection identifiers are relative to it.
const ObjectId& enterpriseRoot();

/// VIGIL-MIB, a part of the enterprise's subtree.
const ObjectId& vigilMibRoot();

/// VIGIL-AGENT-MIB, another part. Applications cannot publish in it.
const ObjectId& agentMibRoot();

/// SNMP's limit for one identifier.
constexpr size_t maxArcs = 128;

/// Reads dotted text relative to enterpriseRoot(); the empty text is the root itself. Returns nothing unless
/// the text consists of numbers up to 4294967295 between dots.
std::optional<ObjectId> fromRelativeText(const std::string& text);

/// Reads full dotted text. A leading dot is allowed. Returns nothing if the text has another form.
std::optional<ObjectId> fromFullText(const std::string& text);

/// The dotted text relative to enterpriseRoot(). id must lie below it.
std::string toRelativeText(const ObjectId& id);

/// The full dotted text, for messages.
QString toText(const ObjectId& id);

/// tree with more arcs at its end.
ObjectId below(const ObjectId& tree, std::initializer_list<unsigned int> arcs);

bool isInTree(const ObjectId& tree, const ObjectId& id);

} // namespace agent

#endif
