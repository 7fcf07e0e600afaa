// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_SNMPSTRING_H
#define VIGIL_BASE_WIRE_SNMPSTRING_H

#include <string>

#include "base/wire/DbBaseType.h"

namespace base {

/// One text variable binding. Unlike an integer it always has a value, possibly an empty one.
class SnmpString : public DbBaseType
{
public:
    static constexpr const char* recordName = "SnmpString";

    SnmpString() = default;
    explicit SnmpString(const QByteArray& bytes);

    SnmpString* clone() const override;
    void clear() override;
    void serialize(QByteArray& out) const override;

    /// Fills the record from its encoding. On failure the record is left partly filled.
    void decode(const QByteArray& bytes);

    std::string oid; ///< dotted text without a leading dot
    std::string value;
};

} // namespace base

#endif
