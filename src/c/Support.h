// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_C_SUPPORT_H
#define VIGIL_C_SUPPORT_H

// Shared by the functions of <vigil/vigil_c.h>.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

#include <vigil/Range.h>
#include <vigil/vigil_c.h>

#include "c/HandleTable.h"
#include "c/Utf8.h"
#include "platform/Platform.h"

namespace c {

/// A code on its way out of an operation.
struct Failure
{
    vigil_code code;
};

inline void require(bool condition, vigil_code code)
{
    if (!condition)
        throw Failure{code};
}

/// Runs the body of an exported function. No exception leaves it.
template <typename Operation>
vigil_code guarded(Operation operation) noexcept
{
    try {
        require(!platform::isForkedChild(), VIGIL_FORKED);
        operation();
        return VIGIL_OK;
    } catch (const Failure& failure) {
        return failure.code;
    } catch (const std::bad_alloc&) {
        return VIGIL_NO_MEMORY;
    } catch (const std::invalid_argument&) { // the handles say so
        return VIGIL_TAKEN;
    } catch (const std::logic_error&) { // another thread has just freed it
        return VIGIL_BAD_HANDLE;
    } catch (...) {
        return VIGIL_INTERNAL;
    }
}

inline void refuseInsideCallback()
{
    require(vigil_in_callback() == 0, VIGIL_IN_CALLBACK);
}

inline std::string text(const char* given)
{
    require(given != nullptr, VIGIL_NULL);
    require(isUtf8(given), VIGIL_BAD_UTF8);
    return given;
}

template <typename Value>
Value& output(Value* pointer)
{
    require(pointer != nullptr, VIGIL_NULL);
    return *pointer;
}

void writeText(const std::string& text, char* buffer, std::size_t* size);

vigil::Range toRange(const vigil_range* range);
vigil_range fromRange(const vigil::Range& range);

/// The object of a handle.
template <typename Object, typename Handle>
std::shared_ptr<Object> find(const Handle* handle)
{
    require(handle != nullptr, VIGIL_NULL);
    auto object = std::dynamic_pointer_cast<Object>(
        HandleTable::instance().find(reinterpret_cast<std::uintptr_t>(handle)));
    require(object != nullptr, VIGIL_BAD_HANDLE);
    return object;
}

/// A new handle of object. Ends it if there is no memory for the handle.
template <typename Handle>
void handOut(const std::shared_ptr<vigil::detail::Owned>& object, Handle** handle)
{
    try {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): never dereferenced
        *handle = reinterpret_cast<Handle*>(HandleTable::instance().add(object));
    } catch (...) {
        vigil::detail::Owned::end(object);
        throw;
    }
}

/// Frees the handle of an Object; null is allowed.
template <typename Object, typename Handle>
void release(Handle* handle)
{
    if (!handle)
        return;
    find<Object>(handle);
    auto object = HandleTable::instance().take(reinterpret_cast<std::uintptr_t>(handle));
    require(object != nullptr, VIGIL_BAD_HANDLE);
    vigil::detail::Owned::end(std::move(object));
}

} // namespace c

#endif
