// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/CellWarnings.h"

#include <functional>
#include <string_view>

#include "agent/core/Log.h"

namespace agent {

void CellWarnings::warn(const Owner& application, const ObjectId& id, const QString& text)
{
    std::set<size_t>& warned = m_warned[application.application];
    if (warned.size() >= maxPerApplication)
        return;
    const std::string_view bytes(reinterpret_cast<const char*>(id.data()), id.size() * sizeof(id[0]));
    if (!warned.insert(std::hash<std::string_view>()(bytes)).second)
        return;
    log::warning(application.user, application.name + QLatin1Char(' ') + text);
    if (warned.size() == maxPerApplication)
        log::warning(
            application.user,
            QStringLiteral("%1: further warnings about its cells are suppressed").arg(application.name));
}

} // namespace agent
