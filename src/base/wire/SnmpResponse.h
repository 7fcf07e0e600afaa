// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_SNMPRESPONSE_H
#define VIGIL_BASE_WIRE_SNMPRESPONSE_H

#include "base/wire/DbBaseType.h"
#include "base/wire/Decode.h"
#include "base/wire/PropertyWriter.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpString.h"

namespace base {

/// The response to a validation request: the requested variable binding and a verdict.
template <typename Varbind>
class SnmpResponse : public DbBaseType
{
public:
    static const char* const recordName;

    SnmpResponse() = default;
    explicit SnmpResponse(const QByteArray& bytes) { decode(bytes); }

    SnmpResponse* clone() const override { return new SnmpResponse(*this); }
    void clear() override { *this = SnmpResponse(); }

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
        visitor.required(1, "Varbind", record.varbind);
        visitor.required(2, "ErrorStatus", record.errorStatus);
    }

    /// Fills the record from its encoding. On failure the record is left partly filled.
    void decode(const QByteArray& bytes) { decodeRecord(bytes, *this); }

    Varbind varbind;
    int errorStatus = 0; ///< an SNMP error status; 0 accepts
};

using SnmpIntResponse = SnmpResponse<SnmpInt>;
using SnmpStringResponse = SnmpResponse<SnmpString>;

template <>
inline const char* const SnmpIntResponse::recordName = "SnmpIntResponse";
template <>
inline const char* const SnmpStringResponse::recordName = "SnmpStringResponse";

} // namespace base

#endif
