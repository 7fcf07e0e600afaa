#include "base/DbBaseType.h"

namespace base {

DbBaseType& DbBaseType::assign(const DbBaseType& other)
{
    m_storeType = other.m_storeType;
    return *this;
}

} // namespace base
