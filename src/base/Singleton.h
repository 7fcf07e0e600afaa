// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_SINGLETON_H
#define VIGIL_BASE_SINGLETON_H

namespace base {

/// Marks a class with one object per process.
template <typename T>
class Singleton
{
public:
    virtual ~Singleton() = default;
};

} // namespace base

#endif
