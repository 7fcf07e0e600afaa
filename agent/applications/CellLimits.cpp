// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/CellLimits.h"

#include "agent/core/ShortText.h"

namespace agent {

namespace {

/// Cut after as many arcs as SNMP allows: applications can send far longer identifiers.
QString toShortText(const ObjectId& id)
{
    if (id.size() <= maxArcs)
        return toText(id);
    return toText(ObjectId(id.begin(), id.begin() + maxArcs)) + QStringLiteral(" ...");
}

} // namespace

Error CellLimits::checkIdentifier(const ObjectId& id)
{
    if (id.size() <= enterpriseRoot().size())
        return Error(QStringLiteral("publishes a value without an identifier; it is not served"));
    if (isInTree(agentMibRoot(), id))
        return Error(QStringLiteral("publishes %1, one of the agent's own objects; it is not served, use "
                                    "another identifier")
                         .arg(toShortText(id)));
    if (id.size() <= maxArcs)
        return {};
    return Error(QStringLiteral("publishes an identifier of %1 arcs, SNMP allows %2; it is not served, use "
                                "shorter keys and names: %3")
                     .arg(id.size())
                     .arg(maxArcs)
                     .arg(toShortText(id)));
}

Error CellLimits::checkText(const ObjectId& id, const CellValue& value) const
{
    const std::string* text = std::get_if<std::string>(&value);
    if (!text || text->size() <= static_cast<size_t>(m_limits.textBytes))
        return {};
    return Error(QStringLiteral("publishes a text of %1 bytes, --max-text allows %2; the rest of %3 is not "
                                "served")
                     .arg(text->size())
                     .arg(m_limits.textBytes)
                     .arg(toText(id)));
}

CellValue CellLimits::cutText(const CellValue& value) const
{
    const std::string* text = std::get_if<std::string>(&value);
    return text ? CellValue(shortened(*text, static_cast<size_t>(m_limits.textBytes))) : value;
}

Error CellLimits::checkCount(ApplicationId application, const ObjectId& id) const
{
    if (m_store.countOf(application) < static_cast<size_t>(m_limits.cells))
        return {};
    const Cell* cell = m_store.find(id);
    if (cell && cell->owner == application)
        return {};
    return Error(QStringLiteral("publishes more cells than --max-cells allows (%1); the others are not "
                                "served, the first of them is %2")
                     .arg(m_limits.cells)
                     .arg(toText(id)));
}

} // namespace agent
