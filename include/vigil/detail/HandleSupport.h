// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_DETAIL_HANDLESUPPORT_H
#define VIGIL_DETAIL_HANDLESUPPORT_H

// Of no use to an application: what the handles share.

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include <vigil/vigil_c.h>

namespace vigil {
namespace detail {

/// Holds a mutex for a scope. A forked child takes no lock: its holder may be a thread of the parent.
class ScopedLock
{
public:
    explicit ScopedLock(std::mutex& mutex) : m_mutex(vigil_in_forked_child() ? nullptr : &mutex)
    {
        if (m_mutex)
            m_mutex->lock();
    }
    ~ScopedLock()
    {
        if (m_mutex)
            m_mutex->unlock();
    }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    std::mutex* const m_mutex;
};

/// Repeats operation for up to a second if it throws, as it does while no memory is left. False if it never
/// succeeds.
template <typename Operation>
bool untilMemory(Operation operation) noexcept
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        try {
            operation();
            return true;
        } catch (...) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    return false;
}

inline void refuseInsideCallback(const char* operation)
{
    if (vigil_in_callback())
        throw std::logic_error(std::string(operation) + " inside a callback of the library");
}

/// The base of what a handle owns: an object of the library and the application's functions for it.
class Owned
{
public:
    Owned() = default;
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    virtual ~Owned() = default;

    /// Ends owned now or, inside a callback, on a thread of its own once the callback has returned. No
    /// function of the application is called afterwards.
    static void end(std::shared_ptr<Owned> owned) noexcept
    {
        if (!owned)
            return;
        if (!vigil_in_callback())
            return endNow(std::move(owned));
        owned->m_isMuted = true;
        Owned* object = owned.get();
        object->m_self = std::move(owned);
        try {
            std::thread([object] { endNow(std::move(object->m_self)); }).detach();
        } catch (...) {
            // No thread is left, and the library still knows the object: it stays.
        }
    }

protected:
    /// True once the handle was ended inside a callback: no function of the application is called any more.
    /// What calls them shares this flag, since another thread may replace it at the same time.
    const std::atomic<bool>& isMuted() const { return m_isMuted; }

private:
    static void endNow(std::shared_ptr<Owned> owned) noexcept
    {
        Owned* object = owned.get();
        if (!object->end())
            object->m_self = std::move(owned); // the library still knows it: it stays
    }

    /// Ends the library's object and waits for a callback in progress. False if memory runs out, and the
    /// library may still call a function. Not called inside a callback. Called once.
    virtual bool end() noexcept = 0;

    std::atomic<bool> m_isMuted{false};
    std::shared_ptr<Owned> m_self; // of an object without a handle that is still needed
};

/// Moves handles: a moved-from handle is empty, and an assigned one ends what it had.
template <typename Content>
class Handle
{
public:
    Handle() noexcept = default;
    Handle(Handle&& other) noexcept = default;
    Handle& operator=(Handle&& other) noexcept
    {
        if (this != &other) {
            const std::shared_ptr<Content> previous = std::move(m_content);
            m_content = std::move(other.m_content);
            Owned::end(previous);
        }
        return *this;
    }
    ~Handle() { Owned::end(m_content); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    explicit operator bool() const noexcept { return m_content != nullptr; }

    /// Ends the content; the handle is empty afterwards.
    void reset() noexcept { Owned::end(std::move(m_content)); }

protected:
    explicit Handle(std::shared_ptr<Content> content) : m_content(std::move(content)) {}

    Content& content() const
    {
        if (!m_content)
            throw std::logic_error("an empty handle was used");
        return *m_content;
    }

    const std::shared_ptr<Content>& shared() const { return m_content; }

private:
    std::shared_ptr<Content> m_content;
};

} // namespace detail
} // namespace vigil

#endif
