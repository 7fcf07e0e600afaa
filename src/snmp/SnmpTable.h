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

#include "base/ThreadSafety.h"
#include "types/OidArcs.h"

namespace vigil {
class ValueChangedCallback;
class VigilSnmpInterface;
} // namespace vigil

/// A conceptual SNMP table with a text or a pair of texts as index.
///
/// Purpose: builds the object identifiers of the cells, writes and withdraws cells through the facade, and
/// routes SETs of a row's cells to the row's callback. The derived classes and SnmpConnector choose the
/// contents.
///
/// The identifier of a cell is the entry's, the column number, the index prefix and the row's index. A text
/// in an index is its length and one arc for each byte. A column index is a position in the list of columns;
/// a column number is an arc in an identifier.
///
/// Threads: the thread of the health check, and the client thread if an application publishes inside a
/// callback. A lock guards the rows; it is taken after the callback store's.
///
/// Ownership: a row owns its callback; the callback store only points to it. The destructor withdraws and
/// deregisters nothing: remove the rows first.
///
/// Failure: operations on missing rows do nothing. The service does not acknowledge values.
template <typename Key>
class SnmpTable
{
public:
    virtual ~SnmpTable();
    SnmpTable(const SnmpTable&) = delete;
    SnmpTable& operator=(const SnmpTable&) = delete;

    /// The index of a text: its length, then its bytes, sign-extended: 0x80 to 0xFF become 4294967168 to
    /// 4294967295. Throws a text if id has more than 4294967295 bytes.
    static vigil::Oid makeVarLenStringOid(const std::string& id);

    /// The first arc of makeVarLenStringOid(). Separate, so that a test of its limit needs no text of 4 GiB.
    static unsigned int makeLengthArc(std::uint64_t length);

    vigil::Oid indexOid(const Key& key) const;

    bool hasRow(const Key& key) const;
    bool hasRowCallback(const Key& key) const;

    /// Creates or replaces the row; writes nothing. Remove the callback of a row before replacing it.
    void createRow(const Key& key);

    void setIntColumn(const Key& key, int columnIndex, unsigned int value);

    /// Withdraw each cell of a row, or of all rows in the order of their keys. If memory runs out, a
    /// repetition withdraws the rest.
    void removeRow(const Key& key);
    void removeAllRows();

    /// Routes SETs of all cells of the row to callback; it replaces an earlier one. Destroys callback if the
    /// row is missing.
    void setRowCallback(const Key& key, std::unique_ptr<vigil::ValueChangedCallback> callback);

    /// Waits for a call of the row's callback in progress.
    void removeRowCallback(const Key& key);

    /// The same for all rows. Takes no memory.
    void removeAllRowCallbacks();

    /// The column index of oid. For an oid outside all columns, columnIndexOf() returns all bits set;
    /// columnIndexOrNone() returns 4 for tables keyed by a text and 5 for tables keyed by a pair.
    unsigned int columnIndexOf(const vigil::Oid& oid) const;
    unsigned int columnIndexOrNone(const vigil::Oid& oid) const;

protected:
    SnmpTable(const std::string& entry, std::vector<unsigned int> columns);

    /// A hook for derived classes; not called yet.
    virtual void onTableEvent();

    /// Adds key to the index prefix, the part of the index shared by all rows.
    void appendIndexPrefix(const Key& key);

    enum class IfMissing { Create, Skip };

    /// Writes cells of one row. Finds the row once, and changes one Oid from cell to cell: copies of Oid were
    /// half of the time of an update.
    class RowWriter
    {
    public:
        RowWriter(SnmpTable& table, const Key& key, IfMissing ifMissing);
        ~RowWriter();
        RowWriter(const RowWriter&) = delete;
        RowWriter& operator=(const RowWriter&) = delete;

        /// False if there is no row; then nothing must be written.
        explicit operator bool() const { return m_cell != nullptr; }

        void write(int columnIndex, int value);
        void write(int columnIndex, const std::string& value);

    private:
        const vigil::Oid& cell(int columnIndex);

        SnmpTable& m_table;
        std::unique_ptr<vigil::Oid> m_cell;
    };

private:
    struct Row
    {
        vigil::OidArcs firstCell; // the others differ in the column number
        std::unique_ptr<vigil::ValueChangedCallback> callback;
        std::vector<vigil::Oid> callbackCells; // where it is registered; its removal takes no memory
    };

    using Rows = std::map<Key, Row>;

    bool hasAnyRowCallback() const;
    vigil::OidArcs firstCellOf(const Key& key) const;
    std::vector<vigil::Oid> cellsOf(vigil::OidArcs firstCell) const;

    vigil::VigilSnmpInterface& m_facade;
    const vigil::Oid m_entry;
    const std::vector<unsigned int> m_columns;
    vigil::Oid m_indexPrefix;
    mutable base::Mutex m_rowsMutex;
    Rows m_rows VIGIL_GUARDED_BY(m_rowsMutex);
    std::unique_ptr<vigil::Oid> m_spareCell VIGIL_GUARDED_BY(m_rowsMutex); // for the next RowWriter
};

using StringPair = std::pair<std::string, std::string>;

extern template class SnmpTable<std::string>;
extern template class SnmpTable<StringPair>;

#endif
