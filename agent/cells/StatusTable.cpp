// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/cells/StatusTable.h"

#include <utility>

namespace agent {

StatusTable::StatusTable(ObjectId entry, unsigned int status, unsigned int summary)
    : m_entry(std::move(entry)), m_status(status), m_summary(summary)
{}

std::optional<StatusTable::Position> StatusTable::positionOf(const ObjectId& id) const
{
    const size_t columnAt = m_entry.size();
    if (id.size() <= columnAt + 1 || !isInTree(m_entry, id))
        return std::nullopt;
    const unsigned int number = id[columnAt];
    if (number != m_status && number != m_summary)
        return std::nullopt;
    return Position{number == m_status ? Column::Status : Column::Summary,
                    ObjectId(id.begin() + static_cast<std::ptrdiff_t>(columnAt) + 1, id.end())};
}

ObjectId StatusTable::column(Column column) const
{
    return below(m_entry, {column == Column::Status ? m_status : m_summary});
}

ObjectId StatusTable::cellOf(Column column, const ObjectId& row) const
{
    ObjectId id = this->column(column);
    id.insert(id.end(), row.begin(), row.end());
    return id;
}

const StatusTable& resultTable()
{
    static const StatusTable table(below(vigilMibRoot(), {3, 1}), 1, 2);
    return table;
}

} // namespace agent
