// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_SNMPTABLE_H
#define VIGIL_SNMP_SNMPTABLE_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <vigil/Oid.h>
#include <vigil/VigilSnmpInterface.h>

#include "base/ThreadSafety.h"

namespace vigil {
class ValueChangedCallback;
}

/// A conceptual SNMP table whose rows are named by a text or by a pair of texts.
///
/// Purpose: knows the object identifier of each cell, writes and withdraws cells through the service facade,
/// and routes SETs of a row's cells to the row's callback. What goes into which column is decided by the
/// derived classes and by SnmpConnector.
///
/// A cell's identifier is the entry's, the column number, the index prefix and the row's index. A text in an
/// index is its length and one arc for each byte. "Column index" means the place in the list of columns; the
/// column number is what stands in the identifier.
///
/// Threads: used on the thread of the health check, and on the client thread when an application republishes
/// from inside a callback; the rows have a lock of their own for that. It is taken after the callback
/// store's.
///
/// Ownership: a row owns its callback; the callback store only points to it. Destroying a table withdraws
/// nothing and deregisters nothing: remove the rows first.
///
/// Failure: operations on rows that do not exist do nothing. The service gives no answer to what is written.
template <typename Key>
class SnmpTable
{
public:
    virtual ~SnmpTable();
    SnmpTable(const SnmpTable&) = delete;
    SnmpTable& operator=(const SnmpTable&) = delete;

    /// The index of a text: its length, then its bytes as signed characters, which sends bytes from 0x80 up
    /// to the far end of the arcs. Throws a text when id has more than 4294967295 bytes.
    static vigil::Oid makeVarLenStringOid(const std::string& id);

    /// The first arc of makeVarLenStringOid(), for a text of that many bytes. On its own so that its limit
    /// can be tested without a text of 4 GiB.
    static unsigned int makeLengthArc(std::uint64_t length);

    vigil::Oid indexOid(const Key& key) const;

    bool hasRow(const Key& key) const;
    bool hasRowCallback(const Key& key) const;

    /// Makes the row, or makes it anew: then it loses its callback, which must have been removed before.
    /// Writes nothing.
    void createRow(const Key& key);

    void setIntColumn(const Key& key, int columnIndex, unsigned int value);

    /// Withdraw each cell of a row, or of all rows in the order of their keys.
    void removeRow(const Key& key);
    void removeAllRows();

    /// Routes SETs of all cells of the row to callback, in place of an earlier one. Without such a row the
    /// callback is destroyed.
    void setRowCallback(const Key& key, std::unique_ptr<vigil::ValueChangedCallback> callback);

    /// When it returns, no call of the row's callback is under way.
    void removeRowCallback(const Key& key);

    /// The column index of the column that contains oid, or all bits set. The other variant answers the
    /// number that the adapters take for "no column": 4 for tables keyed by a text, 5 for those keyed by a
    /// pair.
    unsigned int columnIndexOf(const vigil::Oid& oid) const;
    unsigned int columnIndexOrNone(const vigil::Oid& oid) const;

protected:
    SnmpTable(const std::string& entry, std::vector<unsigned int> columns);

    /// Called on no occasion yet; a place for tables that want to know of changes.
    virtual void onTableEvent();

    /// Adds key to the part of the index that all rows share.
    void appendIndexPrefix(const Key& key);

    void createRowIfAbsent(const Key& key);
    void writeCell(const Key& key, int columnIndex, int value);
    void writeCell(const Key& key, int columnIndex, const std::string& value);

private:
    struct Row
    {
        std::vector<vigil::Oid> cells; // one for each column, in the order of the columns
        std::unique_ptr<vigil::ValueChangedCallback> callback;
    };

    std::vector<vigil::Oid> cellsOf(const Key& key) const;
    bool findCell(const Key& key, int columnIndex, vigil::Oid& cell) const;

    vigil::VigilSnmpInterface& m_facade;
    const vigil::Oid m_entry;
    const std::vector<unsigned int> m_columns;
    vigil::Oid m_indexPrefix;
    mutable base::Mutex m_rowsMutex;
    std::map<Key, Row> m_rows VIGIL_GUARDED_BY(m_rowsMutex);
};

using StringPair = std::pair<std::string, std::string>;

extern template class SnmpTable<std::string>;
extern template class SnmpTable<StringPair>;

#endif
