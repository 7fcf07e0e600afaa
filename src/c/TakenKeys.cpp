// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "c/TakenKeys.h"

namespace c {

TakenKeys& TakenKeys::instance()
{
    static const base::NeverDestroyed<TakenKeys> keys;
    return keys.get();
}

bool TakenKeys::take(const Keys& keys)
{
    const base::MutexLock lock(m_mutex);
    return m_keys.insert(keys).second;
}

void TakenKeys::release(const Keys& keys) noexcept
{
    const base::MutexLock lock(m_mutex);
    m_keys.erase(keys);
}

} // namespace c
