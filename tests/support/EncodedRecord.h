// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_ENCODEDRECORD_H
#define VIGIL_SUPPORT_ENCODEDRECORD_H

#include "base/wire/DbBaseType.h"

namespace support {

inline QByteArray encoded(const base::DbBaseType& record)
{
    QByteArray bytes;
    record.serialize(bytes);
    return bytes;
}

} // namespace support

#endif
