// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_C_TAKENKEYS_H
#define VIGIL_C_TAKENKEYS_H

#include <set>
#include <string>
#include <utility>

#include "base/NeverDestroyed.h"
#include "base/ThreadSafety.h"

namespace c {

using Keys = std::pair<std::string, std::string>;

/// The keys of the checks of <vigil/vigil_c.h>. A check keeps its keys until it has ended: one freed in a
/// callback still withdraws its rows, after its handle is gone.
///
/// Threads: any.
class TakenKeys
{
public:
    /// The one set of the process. Statics of the application may use it at the end.
    static TakenKeys& instance();

    /// False if a check has these keys.
    bool take(const Keys& keys);

    void release(const Keys& keys) noexcept;

private:
    friend class base::NeverDestroyed<TakenKeys>;
    TakenKeys() = default;

    base::Mutex m_mutex;
    std::set<Keys> m_keys VIGIL_GUARDED_BY(m_mutex);
};

} // namespace c

#endif
