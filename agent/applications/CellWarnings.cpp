// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/CellWarnings.h"

#include <functional>
#include <string_view>

#include "agent/core/Log.h"

namespace agent {

void CellWarnings::warn(ApplicationId owner, const ObjectId& id, const QString& text)
{
    std::set<size_t>& said = m_said[owner];
    if (said.size() >= maxPerOwner)
        return;
    const std::string_view bytes(reinterpret_cast<const char*>(id.data()), id.size() * sizeof(id[0]));
    if (!said.insert(std::hash<std::string_view>()(bytes)).second)
        return;
    log::warning(text);
    if (said.size() == maxPerOwner)
        log::warning(
            QStringLiteral("application %1: further warnings about its cells are not written").arg(owner));
}

QString shortText(const ObjectId& id)
{
    if (id.size() <= maxArcs)
        return toText(id);
    return toText(ObjectId(id.begin(), id.begin() + maxArcs)) + QStringLiteral(" ...");
}

} // namespace agent
