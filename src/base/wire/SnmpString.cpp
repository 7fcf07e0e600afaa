// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/SnmpString.h"

#include "base/wire/Decode.h"
#include "base/wire/PropertyWriter.h"

namespace base {

SnmpString::SnmpString(const QByteArray& bytes)
{
    decode(bytes);
}

SnmpString* SnmpString::clone() const
{
    return new SnmpString(*this);
}

void SnmpString::clear()
{
    *this = SnmpString();
}

void SnmpString::serialize(QByteArray& out) const
{
    PropertyWriter writer(out);
    writer.write(0, m_storeType);
    writer.write(1, oid);
    writer.write(2, value);
}

void SnmpString::decode(const QByteArray& bytes)
{
    decodeRecord(bytes, recordName, {"StoreType", "Oid", "Value"}, [this](PropertyReader& reader) {
        reader.readRequired(0, m_storeType);
        reader.readRequired(1, oid);
        reader.readRequired(2, value);
    });
}

} // namespace base
