// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_SNMPINT_H
#define VIGIL_BASE_WIRE_SNMPINT_H

#include <string>

#include "base/wire/DbBaseType.h"

namespace base {

/// One integer variable binding. A null value means no value: the variable is unset.
class SnmpInt : public DbBaseType
{
public:
    static constexpr const char* recordName = "SnmpInt";

    SnmpInt() = default;
    explicit SnmpInt(const QByteArray& bytes);

    SnmpInt* clone() const override;
    void clear() override;
    void serialize(QByteArray& out) const override;

    /// The layout of the record. Writer, reader and check all follow it.
    template <typename Record, typename Visitor>
    static void describe(Record& record, Visitor& visitor)
    {
        visitor.required(0, "StoreType", record.m_storeType);
        visitor.required(1, "Oid", record.oid);
        visitor.optional(2, "Value", record.value);
    }

    /// Fills the record from its encoding. On failure the record is left partly filled.
    void decode(const QByteArray& bytes);

    std::string oid; ///< dotted text without a leading dot
    DbDataType<int> value;
};

} // namespace base

#endif
