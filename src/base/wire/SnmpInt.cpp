// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/SnmpInt.h"

#include "base/wire/Decode.h"
#include "base/wire/PropertyWriter.h"

namespace base {

SnmpInt::SnmpInt(const QByteArray& bytes)
{
    decode(bytes);
}

SnmpInt* SnmpInt::clone() const
{
    return new SnmpInt(*this);
}

void SnmpInt::clear()
{
    *this = SnmpInt();
}

void SnmpInt::serialize(QByteArray& out) const
{
    PropertyWriter writer(out);
    writer.write(0, m_storeType);
    writer.write(1, oid);
    if (!value.isNull())
        writer.write(2, value);
}

void SnmpInt::decode(const QByteArray& bytes)
{
    decodeRecord(bytes, recordName, {"StoreType", "Oid", "Value"}, [this](PropertyReader& reader) {
        reader.readRequired(0, m_storeType);
        reader.readRequired(1, oid);
        reader.readOptional(2, value);
    });
}

} // namespace base
