// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_C_HANDLETABLE_H
#define VIGIL_C_HANDLETABLE_H

#include <cstdint>
#include <map>
#include <memory>

#include <vigil/detail/HandleSupport.h>

#include "base/NeverDestroyed.h"
#include "base/ThreadSafety.h"

namespace c {

/// The objects behind the handles of <vigil/vigil_c.h>.
///
/// A handle is a number that is used once, cast to a pointer. So a freed or invented one is found out without
/// looking at any memory.
///
/// Threads: any. find() shares the object, so it stays while an operation uses it, even if another thread
/// takes it out.
class HandleTable
{
public:
    using Object = vigil::detail::Owned;

    /// The one table of the process. Statics of the application may use it at the end.
    static HandleTable& instance();

    std::uintptr_t add(const std::shared_ptr<Object>& object);

    /// Null for a number that is no handle.
    std::shared_ptr<Object> find(std::uintptr_t handle) const;

    /// The same, and removes the handle. Of several threads one gets the object.
    std::shared_ptr<Object> take(std::uintptr_t handle);

private:
    friend class base::NeverDestroyed<HandleTable>;
    HandleTable() = default;

    mutable base::Mutex m_mutex;
    std::map<std::uintptr_t, std::shared_ptr<Object>> m_objects VIGIL_GUARDED_BY(m_mutex);
    std::uintptr_t m_last VIGIL_GUARDED_BY(m_mutex) = 0x10000; // small numbers are usual mistakes
};

} // namespace c

#endif
