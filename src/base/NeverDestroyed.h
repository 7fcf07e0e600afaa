// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_NEVERDESTROYED_H
#define VIGIL_BASE_NEVERDESTROYED_H

#include <new>

namespace base {

/// A static object that is built on first use and whose destructor never runs.
///
/// For what may still be called when the statics of the process are being destroyed, on whatever thread that
/// happens. It stands in static storage, so nothing leaks when the library is unloaded, provided that the
/// object has given back by then what it owned.
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
