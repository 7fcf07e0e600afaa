// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/SnmpTable.h"

#include <vigil/ValueChangedCallback.h>
#include <vigil/VigilSnmpInterface.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "client/CallbackStore.h"
#include "client/CallbackStoreLock.h"
#include "platform/Platform.h"
#include "types/OidNodes.h"

using vigil::Oid;
using vigil::OidArcs;
using vigil::ValueChangedCallback;

namespace {

constexpr unsigned int noColumnOf(const std::string*)
{
    return 4;
}

constexpr unsigned int noColumnOf(const StringPair*)
{
    return 5;
}

Oid indexOfKey(const std::string& key)
{
    return SnmpTable<std::string>::makeVarLenStringOid(key);
}

Oid indexOfKey(const StringPair& key)
{
    return indexOfKey(key.first) + indexOfKey(key.second);
}

} // namespace

template <typename Key>
SnmpTable<Key>::SnmpTable(const std::string& entry, std::vector<unsigned int> columns)
    : m_facade(vigil::VigilSnmpInterface::instance()),
      m_entry(Oid::fromStdString(entry)),
      m_columns(std::move(columns))
{}

template <typename Key>
SnmpTable<Key>::~SnmpTable() = default;

template <typename Key>
void SnmpTable<Key>::onTableEvent()
{}

// --- Identifiers

template <typename Key>
unsigned int SnmpTable<Key>::makeLengthArc(std::uint64_t length)
{
    if (length > (std::numeric_limits<std::uint32_t>::max)())
        throw "makeVarLenStringOid(): id length exceeds uint32 limit.";
    return static_cast<unsigned int>(length);
}

template <typename Key>
Oid SnmpTable<Key>::makeVarLenStringOid(const std::string& id)
{
    std::vector<unsigned int> arcs = {makeLengthArc(id.size())};
    arcs.reserve(id.size() + 1);
    for (const char byte : id)
        arcs.push_back(static_cast<unsigned int>(static_cast<signed char>(byte)));
    return Oid::fromAsnOid(static_cast<unsigned int>(arcs.size()), arcs.data());
}

template <typename Key>
Oid SnmpTable<Key>::indexOid(const Key& key) const
{
    return indexOfKey(key);
}

template <typename Key>
void SnmpTable<Key>::appendIndexPrefix(const Key& key)
{
    m_indexPrefix.append(indexOid(key));
}

template <typename Key>
OidArcs SnmpTable<Key>::firstCellOf(const Key& key) const
{
    return (m_entry + m_columns.front() + m_indexPrefix + indexOid(key)).toStdVector();
}

template <typename Key>
std::vector<Oid> SnmpTable<Key>::cellsOf(OidArcs firstCell) const
{
    std::vector<Oid> cells;
    for (const unsigned int column : m_columns) {
        firstCell[static_cast<std::size_t>(m_entry.size())] = column;
        cells.push_back(Oid::fromStdVector(firstCell));
    }
    return cells;
}

template <typename Key>
unsigned int SnmpTable<Key>::columnIndexOf(const Oid& oid) const
{
    for (unsigned int i = 0; i < m_columns.size(); ++i) {
        if ((m_entry + m_columns[i]).containsChild(oid))
            return i;
    }
    return (std::numeric_limits<unsigned int>::max)();
}

template <typename Key>
unsigned int SnmpTable<Key>::columnIndexOrNone(const Oid& oid) const
{
    const unsigned int index = columnIndexOf(oid);
    return index < m_columns.size() ? index : noColumnOf(static_cast<const Key*>(nullptr));
}

// --- Rows

template <typename Key>
bool SnmpTable<Key>::hasRow(const Key& key) const
{
    if (platform::isForkedChild())
        return false;
    const base::MutexLock lock(m_rowsMutex);
    return m_rows.count(key) > 0;
}

template <typename Key>
bool SnmpTable<Key>::hasRowCallback(const Key& key) const
{
    if (platform::isForkedChild())
        return false;
    const base::MutexLock lock(m_rowsMutex);
    const auto row = m_rows.find(key);
    return row != m_rows.end() && row->second.callback;
}

template <typename Key>
void SnmpTable<Key>::createRow(const Key& key)
{
    if (platform::isForkedChild())
        return; // another thread of the parent may have left the rows half changed
    OidArcs firstCell = firstCellOf(key);
    const base::MutexLock lock(m_rowsMutex);
    Row& row = m_rows[key];
    row.firstCell = std::move(firstCell);
    row.callback.reset();
    row.callbackCells.clear();
}

template <typename Key>
void SnmpTable<Key>::removeRow(const Key& key)
{
    if (platform::isForkedChild())
        return;
    removeRowCallback(key);
    typename Rows::node_type row;
    {
        const base::MutexLock lock(m_rowsMutex);
        row = m_rows.extract(key);
    }
    if (!row)
        return;
    try {
        for (const Oid& cell : cellsOf(row.mapped().firstCell))
            m_facade.unsetOid(cell);
    } catch (...) { // no memory; the caller may try again
        const base::MutexLock lock(m_rowsMutex);
        m_rows.insert(std::move(row));
        throw;
    }
}

template <typename Key>
void SnmpTable<Key>::removeAllRows()
{
    if (platform::isForkedChild())
        return;
    std::vector<Key> keys;
    {
        const base::MutexLock lock(m_rowsMutex);
        for (const auto& row : m_rows)
            keys.push_back(row.first);
    }
    for (const Key& key : keys)
        removeRow(key);
}

// --- Cells

template <typename Key>
SnmpTable<Key>::RowWriter::RowWriter(SnmpTable& table, const Key& key, IfMissing ifMissing) : m_table(table)
{
    if (platform::isForkedChild())
        return;
    const base::MutexLock lock(table.m_rowsMutex);
    auto row = table.m_rows.find(key);
    if (row == table.m_rows.end()) {
        if (ifMissing == IfMissing::Skip)
            return;
        row = table.m_rows.emplace(key, Row{table.firstCellOf(key), nullptr, {}}).first;
    }
    m_cell = table.m_spareCell ? std::move(table.m_spareCell) : std::make_unique<Oid>();
    vigil::OidNodes::assign(*m_cell, row->second.firstCell);
}

template <typename Key>
SnmpTable<Key>::RowWriter::~RowWriter()
{
    if (!m_cell)
        return;
    const base::MutexLock lock(m_table.m_rowsMutex);
    m_table.m_spareCell = std::move(m_cell);
}

template <typename Key>
const Oid& SnmpTable<Key>::RowWriter::cell(int columnIndex)
{
    const auto column = static_cast<std::size_t>(m_table.m_entry.size());
    vigil::OidNodes::setArc(*m_cell, column, m_table.m_columns.at(static_cast<std::size_t>(columnIndex)));
    return *m_cell;
}

template <typename Key>
void SnmpTable<Key>::RowWriter::write(int columnIndex, int value)
{
    m_table.m_facade.sendValue(cell(columnIndex), value, 0);
}

template <typename Key>
void SnmpTable<Key>::RowWriter::write(int columnIndex, const std::string& value)
{
    m_table.m_facade.sendValue(cell(columnIndex), value, 0);
}

template <typename Key>
void SnmpTable<Key>::setIntColumn(const Key& key, int columnIndex, unsigned int value)
{
    RowWriter row(*this, key, IfMissing::Skip);
    if (row)
        row.write(columnIndex, static_cast<int>(value));
}

// --- Callbacks

template <typename Key>
void SnmpTable<Key>::setRowCallback(const Key& key, std::unique_ptr<ValueChangedCallback> callback)
{
    if (platform::isForkedChild())
        return;
    removeRowCallback(key);
    const CallbackStoreLock store;
    const base::MutexLock lock(m_rowsMutex);
    const auto row = m_rows.find(key);
    if (row == m_rows.end())
        return;
    if (store)
        row->second.callbackCells = cellsOf(row->second.firstCell);
    row->second.callback = std::move(callback);
    for (const Oid& cell : row->second.callbackCells)
        store->registerValueChangedCallback(cell, row->second.callback.get());
}

template <typename Key>
void SnmpTable<Key>::removeRowCallback(const Key& key)
{
    if (!hasRowCallback(key))
        return; // not touching the store's lock: an application may be updating inside a callback
    const CallbackStoreLock store;
    const base::MutexLock lock(m_rowsMutex);
    const auto row = m_rows.find(key);
    if (row == m_rows.end())
        return;
    if (store) {
        for (const Oid& cell : row->second.callbackCells)
            store->deregisterValueChanged(cell);
    }
    row->second.callback.reset();
    row->second.callbackCells.clear();
}

template <typename Key>
void SnmpTable<Key>::removeAllRowCallbacks()
{
    if (platform::isForkedChild() || !hasAnyRowCallback())
        return; // not touching the store's lock, as above
    const CallbackStoreLock store;
    const base::MutexLock lock(m_rowsMutex);
    for (auto& row : m_rows) {
        for (const Oid& cell : row.second.callbackCells) {
            if (store)
                store->deregisterValueChanged(cell);
        }
        row.second.callback.reset();
        row.second.callbackCells.clear();
    }
}

template <typename Key>
bool SnmpTable<Key>::hasAnyRowCallback() const
{
    const base::MutexLock lock(m_rowsMutex);
    return std::any_of(m_rows.begin(), m_rows.end(),
                       [](const auto& row) { return row.second.callback != nullptr; });
}

template class SnmpTable<std::string>;
template class SnmpTable<StringPair>;
