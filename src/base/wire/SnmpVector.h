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

/// A sequence of records as one record. The library never sends one as a whole frame; peers may nest them.
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
        writer.write(0, m_storeType);
        writer.write(1, elements);
    }

    /// Fills the record from its encoding. On failure the record is left partly filled.
    void decode(const QByteArray& bytes)
    {
        decodeRecord(bytes, recordName, {"StoreType", "Vector"}, [this](PropertyReader& reader) {
            reader.readRequired(0, m_storeType);
            reader.readOptional(1, elements);
        });
    }

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
