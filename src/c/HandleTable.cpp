// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "c/HandleTable.h"

#include <utility>

namespace c {

HandleTable& HandleTable::instance()
{
    static const base::NeverDestroyed<HandleTable> table;
    return table.get();
}

std::uintptr_t HandleTable::add(const std::shared_ptr<Object>& object)
{
    const base::MutexLock lock(m_mutex);
    const std::uintptr_t handle = m_last + 1;
    m_objects.emplace(handle, object);
    m_last = handle;
    return handle;
}

std::shared_ptr<HandleTable::Object> HandleTable::find(std::uintptr_t handle) const
{
    const base::MutexLock lock(m_mutex);
    const auto entry = m_objects.find(handle);
    return entry == m_objects.end() ? nullptr : entry->second;
}

std::shared_ptr<HandleTable::Object> HandleTable::take(std::uintptr_t handle)
{
    const base::MutexLock lock(m_mutex);
    const auto entry = m_objects.find(handle);
    if (entry == m_objects.end())
        return nullptr;
    std::shared_ptr<Object> object = std::move(entry->second);
    m_objects.erase(entry);
    return object;
}

} // namespace c
