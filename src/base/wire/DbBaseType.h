// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_DBBASETYPE_H
#define VIGIL_BASE_WIRE_DBBASETYPE_H

#include <QByteArray>

#include "base/wire/DbDataType.h"

namespace base {

/// The base of all data records exchanged by the library and the local SNMP service.
///
/// A record is the payload of one frame. Its encoding is a list of numbered properties; each record class
/// lists them in describe(). Property 0 is always the store type. The library's own records leave it 0; a
/// response returns that of the request.
///
/// Ownership: a clone belongs to the caller.
/// Failure: building a record from bytes throws a QString if a required property is missing or a length is
/// senseless. Bytes that end early leave the remaining members at their defaults.
class DbBaseType
{
public:
    virtual ~DbBaseType() = default;

    /// Copies the store type alone.
    virtual DbBaseType& assign(const DbBaseType& other);
    virtual DbBaseType* clone() const = 0;

    /// Resets the record to its defaults.
    virtual void clear() = 0;

    /// Appends the encoding to out.
    virtual void serialize(QByteArray& out) const = 0;

    // Three getters and two setters: each is a slot of the virtual table and keeps its place.
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
