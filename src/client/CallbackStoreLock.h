// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_CALLBACKSTORELOCK_H
#define VIGIL_CLIENT_CALLBACKSTORELOCK_H

#include <memory>

class CallbackStore;
class StoreMutex;

/// Access to the facade's callback store: holds the store's lock as long as it lives.
///
/// Purpose: one handle is one atomic operation on the store, callbacks into the application included.
///
/// Threads: any. A thread that has a handle must not make a second one: it would wait for itself. Operations
/// of the application are checked by refuseInsideCallback() first.
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

    /// True inside a callback, and while this thread has a handle.
    static bool isHeldByThisThread();

private:
    StoreMutex* m_mutex = nullptr;
    std::shared_ptr<CallbackStore> m_store;
};

#endif
