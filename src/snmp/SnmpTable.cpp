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

using vigil::Oid;
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
std::vector<Oid> SnmpTable<Key>::cellsOf(const Key& key) const
{
    std::vector<Oid> cells;
    for (const unsigned int column : m_columns)
        cells.push_back(m_entry + column + m_indexPrefix + indexOid(key));
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
    std::vector<Oid> cells = cellsOf(key);
    const base::MutexLock lock(m_rowsMutex);
    Row& row = m_rows[key];
    row.cells = std::move(cells);
    row.callback.reset();
}

template <typename Key>
void SnmpTable<Key>::createRowIfAbsent(const Key& key)
{
    if (!hasRow(key))
        createRow(key);
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
        for (const Oid& cell : row.mapped().cells)
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
bool SnmpTable<Key>::findCell(const Key& key, int columnIndex, Oid& cell) const
{
    if (platform::isForkedChild())
        return false;
    const base::MutexLock lock(m_rowsMutex);
    const auto row = m_rows.find(key);
    if (row == m_rows.end())
        return false;
    cell = row->second.cells.at(static_cast<std::size_t>(columnIndex));
    return true;
}

template <typename Key>
void SnmpTable<Key>::writeCell(const Key& key, int columnIndex, int value)
{
    Oid cell;
    if (findCell(key, columnIndex, cell))
        m_facade.sendValue(cell, value, 0);
}

template <typename Key>
void SnmpTable<Key>::writeCell(const Key& key, int columnIndex, const std::string& value)
{
    Oid cell;
    if (findCell(key, columnIndex, cell))
        m_facade.sendValue(cell, value, 0);
}

template <typename Key>
void SnmpTable<Key>::setIntColumn(const Key& key, int columnIndex, unsigned int value)
{
    writeCell(key, columnIndex, static_cast<int>(value));
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
    if (store) {
        for (const Oid& cell : row->second.cells)
            store->registerValueChangedCallback(cell, callback.get());
    }
    row->second.callback = std::move(callback);
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
        for (const Oid& cell : row->second.cells)
            store->deregisterValueChanged(cell);
    }
    row->second.callback.reset();
}

template <typename Key>
void SnmpTable<Key>::removeAllRowCallbacks()
{
    if (platform::isForkedChild() || !hasAnyRowCallback())
        return; // not touching the store's lock, as above
    const CallbackStoreLock store;
    const base::MutexLock lock(m_rowsMutex);
    for (auto& row : m_rows) {
        for (const Oid& cell : row.second.cells) {
            if (store && row.second.callback)
                store->deregisterValueChanged(cell);
        }
        row.second.callback.reset();
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
