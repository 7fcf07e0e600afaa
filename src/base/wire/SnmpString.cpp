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
    describe(*this, writer);
}

void SnmpString::decode(const QByteArray& bytes)
{
    decodeRecord(bytes, *this);
}

} // namespace base
