#include "ServedCells.h"

namespace agent {

using healthTable::Column;

ServedCells::ServedCells(CellStore& store, Clock&) : m_store(store) {}

std::optional<OwnerId> ServedCells::publish(OwnerId owner, const ObjectId& id, const CellValue& value)
{
    const std::optional<OwnerId> previous = m_store.set(id, value, owner);
    tellWritten(id, value);
    return previous;
}

size_t ServedCells::unset(OwnerId owner, const ObjectId& tree)
{
    const std::vector<ObjectId> removed = m_store.unsetTree(tree, owner);
    tellRemoved(removed);
    return removed.size();
}

bool ServedCells::lose(OwnerId owner)
{
    tellRemoved(m_store.removeAllOf(owner));
    return false;
}

void ServedCells::tellWritten(const ObjectId& id, const CellValue& value)
{
    const std::optional<healthTable::Position> position = healthTable::positionOf(id);
    if (!position)
        return;
    const int* status = std::get_if<int>(&value);
    const std::string* summary = std::get_if<std::string>(&value);
    if (position->column == Column::Status && status)
        emit statusWritten(position->check, *status);
    else if (position->column == Column::Summary && summary)
        emit summaryWritten(position->check, *summary);
}

void ServedCells::tellRemoved(const std::vector<ObjectId>& ids)
{
    for (const ObjectId& id : ids) {
        const std::optional<healthTable::Position> position = healthTable::positionOf(id);
        if (position && position->column == Column::Status)
            emit checkRemoved(position->check);
    }
}

} // namespace agent
