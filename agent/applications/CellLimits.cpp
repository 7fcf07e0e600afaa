// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/CellLimits.h"

#include "agent/applications/CellWarnings.h"

namespace agent {

QString CellLimits::cellProblem(const ObjectId& id, const CellValue& value) const
{
    const QString problem = identifierProblem(id);
    return problem.isEmpty() ? textProblem(id, value) : problem;
}

QString CellLimits::identifierProblem(const ObjectId& id) const
{
    if (id.size() <= enterpriseRoot().size())
        return QStringLiteral("publishes a value without an identifier; it is not served");
    if (isInTree(agentMibRoot(), id))
        return QStringLiteral("publishes %1, which is among the agent's own objects; it is not served, use "
                              "another identifier")
            .arg(shortText(id));
    if (id.size() <= maxArcs)
        return QString();
    return QStringLiteral(
               "publishes an identifier of %1 arcs, SNMP carries %2; it is not served, use shorter "
               "keys and names: %3")
        .arg(id.size())
        .arg(maxArcs)
        .arg(shortText(id));
}

QString CellLimits::textProblem(const ObjectId& id, const CellValue& value) const
{
    const std::string* text = std::get_if<std::string>(&value);
    if (!text || text->size() <= static_cast<size_t>(m_limits.textBytes))
        return QString();
    return QStringLiteral("publishes a text of %1 bytes, --max-text allows %2; %3 is not served until the "
                          "text is shorter")
        .arg(text->size())
        .arg(m_limits.textBytes)
        .arg(toText(id));
}

QString CellLimits::countProblem(ApplicationId owner, const ObjectId& id) const
{
    if (m_store.countOf(owner) < static_cast<size_t>(m_limits.cells))
        return QString();
    const Cell* cell = m_store.find(id);
    if (cell && cell->owner == owner)
        return QString();
    return QStringLiteral("publishes more than the %1 cells that --max-cells allows; the others are not "
                          "served, the first of them is %2")
        .arg(m_limits.cells)
        .arg(toText(id));
}

} // namespace agent
