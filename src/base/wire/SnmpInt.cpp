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
    describe(*this, writer);
}

void SnmpInt::decode(const QByteArray& bytes)
{
    decodeRecord(bytes, *this);
}

} // namespace base
