// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_DBDATATYPE_H
#define VIGIL_BASE_WIRE_DBDATATYPE_H

namespace base {

/// A nullable value of a data record.
template <typename T>
class DbDataType
{
public:
    DbDataType() = default;
    explicit DbDataType(T value) : m_isNull(false), m_value(value) {}
    DbDataType(const DbDataType&) = default;
    DbDataType& operator=(const DbDataType&) = default;
    virtual ~DbDataType() = default;

    bool isNull() const { return m_isNull; }

    /// 0 while the value is null.
    T value() const { return m_value; }
    const T& valueRef() const { return m_value; }

    void setValue(T value) { *this = DbDataType(value); }
    void clear() { *this = DbDataType(); }

private:
    bool m_isNull = true;
    T m_value = 0;
    int m_reserved = 0; // part of the class's layout, never sent
};

} // namespace base

#endif
