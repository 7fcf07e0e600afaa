// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_FORKORIGIN_H
#define VIGIL_BASE_FORKORIGIN_H

#include "platform/Platform.h"

namespace base {

/// A member that knows whether its object was made before the process was forked.
class ForkOrigin
{
public:
    /// True in a forked child for an object of its parent. A thread of the parent may have been changing it,
    /// with a lock held, so the child must not destroy it.
    bool isInherited() const { return !m_isMadeInChild && platform::isForkedChild(); }

private:
    const bool m_isMadeInChild = platform::isForkedChild();
};

} // namespace base

#endif
