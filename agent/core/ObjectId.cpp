// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/ObjectId.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "base/wire/Protocol.h"

namespace agent {

namespace {

bool appendArcs(std::string_view text, ObjectId& id)
{
    const char* position = text.data();
    const char* const end = position + text.size();
    while (true) {
        unsigned int arc = 0;
        const auto [next, failure] = std::from_chars(position, end, arc);
        if (failure != std::errc())
            return false;
        id.push_back(arc);
        if (next == end)
            return true;
        if (*next != '.')
            return false;
        position = next + 1;
    }
}

} // namespace

const ObjectId& enterpriseRoot()
{
    static const ObjectId root = *fromFullText(base::enterpriseOid);
    return root;
}

const ObjectId& vigilMibRoot()
{
    static const ObjectId root = *fromRelativeText(base::vigilMibOid);
    return root;
}

const ObjectId& agentMibRoot()
{
    static const ObjectId root = *fromRelativeText(base::vigilAgentMibOid);
    return root;
}

std::optional<ObjectId> fromRelativeText(const std::string& text)
{
    ObjectId id;
    id.reserve(maxArcs); // usually enough
    id = enterpriseRoot();
    if (!text.empty() && !appendArcs(text, id))
        return std::nullopt;
    return id;
}

std::optional<ObjectId> fromFullText(const std::string& text)
{
    const bool hasLeadingDot = !text.empty() && text.front() == '.';
    ObjectId id;
    if (!appendArcs(std::string_view(text).substr(hasLeadingDot ? 1 : 0), id))
        return std::nullopt;
    return id;
}

ObjectId below(const ObjectId& tree, std::initializer_list<unsigned int> arcs)
{
    ObjectId id = tree;
    id.insert(id.end(), arcs);
    return id;
}

std::string toRelativeText(const ObjectId& id)
{
    std::string text;
    for (size_t i = enterpriseRoot().size(); i < id.size(); ++i) {
        if (!text.empty())
            text += '.';
        text += std::to_string(id[i]);
    }
    return text;
}

QString toText(const ObjectId& id)
{
    QString text;
    for (const unsigned int arc : id) {
        if (!text.isEmpty())
            text += QLatin1Char('.');
        text += QString::number(arc);
    }
    return text;
}

bool isInTree(const ObjectId& tree, const ObjectId& id)
{
    return tree.size() <= id.size() && std::equal(tree.begin(), tree.end(), id.begin());
}

} // namespace agent
