// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_FAULTYMEMORY_H
#define VIGIL_SUPPORT_FAULTYMEMORY_H

namespace faults {

/// Lets allocations of this thread fail during its lifetime: one after the first few, or all after them.
/// Under a sanitizer Qt's containers do not fail.
///
/// The program has its own operator new and malloc(). Link it with ENABLE_EXPORTS.
class OutOfMemory
{
public:
    enum class Extent { OneAllocation, AllFurther };

    /// Qt does not survive each failure inside its own classes, so they can be left out. Its thread object,
    /// for example, crashes in its constructor.
    enum class Callers { All, AllButQt };

    OutOfMemory(int succeedingFirst, Extent extent, Callers callers = Callers::All);
    ~OutOfMemory();
    OutOfMemory(const OutOfMemory&) = delete;
    OutOfMemory& operator=(const OutOfMemory&) = delete;

    /// True once an allocation has failed.
    bool hasFailed() const;
};

} // namespace faults

#endif
