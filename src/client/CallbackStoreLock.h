// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_CALLBACKSTORELOCK_H
#define VIGIL_CLIENT_CALLBACKSTORELOCK_H

#include <memory>

class CallbackStore;
class StoreMutex;

/// Access to the facade's callback store: holds the store's lock as long as it lives.
///
/// Purpose: one handle is one undivided operation on the store, callbacks into the application included.
///
/// Threads: any. Making one on a thread that already has one would block for ever; operations that an
/// application might call from inside a callback ask refuseInsideCallback() first.
///
/// Failure: the handle is false, and must not be dereferenced, while the facade has no store.
class CallbackStoreLock
{
public:
    CallbackStoreLock();
    ~CallbackStoreLock();
    CallbackStoreLock(const CallbackStoreLock&) = delete;
    CallbackStoreLock& operator=(const CallbackStoreLock&) = delete;

    explicit operator bool() const { return m_store != nullptr; }
    CallbackStore* operator->() const { return m_store.get(); }

    static bool isHeldByThisThread();

    /// True, and an error line in the log, when this thread holds the lock. operation is what was tried.
    static bool refuseInsideCallback(const char* operation);

private:
    StoreMutex* m_mutex = nullptr;
    std::shared_ptr<CallbackStore> m_store;
};

#endif
