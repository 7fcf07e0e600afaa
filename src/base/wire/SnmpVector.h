// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_SNMPVECTOR_H
#define VIGIL_BASE_WIRE_SNMPVECTOR_H

#include <vector>

#include "base/wire/DbBaseType.h"
#include "base/wire/Decode.h"
#include "base/wire/PropertyWriter.h"
#include "base/wire/SnmpResponse.h"

namespace base {

/// A sequence of records as one record. The library never sends one as a whole frame.
template <typename Element>
class SnmpVector : public DbBaseType
{
public:
    static const char* const recordName;

    SnmpVector() = default;
    explicit SnmpVector(const QByteArray& bytes) { decode(bytes); }

    SnmpVector* clone() const override { return new SnmpVector(*this); }
    void clear() override { *this = SnmpVector(); }

    void serialize(QByteArray& out) const override
    {
        PropertyWriter writer(out);
        describe(*this, writer);
    }

    /// The layout of the record. Writer, reader and check all follow it.
    template <typename Record, typename Visitor>
    static void describe(Record& record, Visitor& visitor)
    {
        visitor.required(0, "StoreType", record.m_storeType);
        visitor.optional(1, "Vector", record.elements);
    }

    /// Fills the record from its encoding. On failure the record is left partly filled.
    void decode(const QByteArray& bytes) { decodeRecord(bytes, *this); }

    std::vector<Element> elements;
};

using SnmpIntVector = SnmpVector<SnmpInt>;
using SnmpStringVector = SnmpVector<SnmpString>;
using SnmpIntResponseVector = SnmpVector<SnmpIntResponse>;
using SnmpStringResponseVector = SnmpVector<SnmpStringResponse>;

template <>
inline const char* const SnmpIntVector::recordName = "SnmpIntVector";
template <>
inline const char* const SnmpStringVector::recordName = "SnmpStringVector";
template <>
inline const char* const SnmpIntResponseVector::recordName = "SnmpIntResponseVector";
template <>
inline const char* const SnmpStringResponseVector::recordName = "SnmpStringResponseVector";

} // namespace base

#endif
