// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/DbBaseType.h"

namespace base {

DbBaseType& DbBaseType::assign(const DbBaseType& other)
{
    m_storeType = other.m_storeType;
    return *this;
}

} // namespace base
