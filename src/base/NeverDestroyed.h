// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_NEVERDESTROYED_H
#define VIGIL_BASE_NEVERDESTROYED_H

#include <new>

namespace base {

/// A static object without destruction: built on first use, never destroyed.
///
/// For objects still in use while the process destroys its statics. The memory is static, so unloading the
/// library leaks nothing as long as the object has released its own resources by then.
template <typename T>
class NeverDestroyed
{
public:
    NeverDestroyed() : m_object(new (m_storage) T) {}

    T& get() const { return *m_object; }

private:
    alignas(T) unsigned char m_storage[sizeof(T)];
    T* const m_object;
};

} // namespace base

#endif
