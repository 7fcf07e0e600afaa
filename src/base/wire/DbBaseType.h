// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_DBBASETYPE_H
#define VIGIL_BASE_WIRE_DBBASETYPE_H

#include <QByteArray>

#include "base/wire/DbDataType.h"

namespace base {

/// The base of all data records that travel between the library and the local SNMP service.
///
/// Purpose: a record writes itself into the payload of one frame and is built back from one. Its encoding is
/// a list of numbered properties, see PropertyWriter and PropertyReader; property 0 of every record is the
/// store type, which the library only carries: it is 0 in records of its own making, and an answer returns
/// the one it was asked with.
///
/// Threads: plain values without locks.
/// Ownership: a clone belongs to the caller.
/// Failure: building a record from bytes throws a QString when a required property is missing or a length
/// makes no sense. Bytes that end early leave the remaining members at their defaults.
class DbBaseType
{
public:
    virtual ~DbBaseType() = default;

    /// Copies the store type alone.
    virtual DbBaseType& assign(const DbBaseType& other);
    virtual DbBaseType* clone() const = 0;

    /// Back to the state after default construction.
    virtual void clear() = 0;

    /// Writes the record's encoding into out, which must be empty.
    virtual void serialize(QByteArray& out) const = 0;

    // The store type has three readers and two writers because peers' records do; all are slots of the
    // virtual table.
    virtual int storeType() const { return m_storeType; }
    virtual int getStoreType() const { return m_storeType; }
    virtual DbDataType<int> storeTypeData() const { return DbDataType<int>(m_storeType); }
    virtual void setStoreType(int storeType) { m_storeType = storeType; }
    virtual void updateStoreType(int storeType) { m_storeType = storeType; }
    virtual int currentStoreType() const { return m_storeType; }

protected:
    DbBaseType() = default;
    DbBaseType(const DbBaseType&) = default;
    DbBaseType& operator=(const DbBaseType&) = default;

    int m_storeType = 0;
};

} // namespace base

#endif
