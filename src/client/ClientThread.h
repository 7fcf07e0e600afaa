// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_CLIENTTHREAD_H
#define VIGIL_CLIENT_CLIENTTHREAD_H

#include <QThread>

#include "base/ThreadSafety.h"

/// The thread of the Client, with its socket, its timer and all callbacks into the application. Only run()
/// executes in it; the object itself belongs to the runner's thread.
///
/// An interruption request makes the client stop sending, so that its exit runs soon.
class ClientThread : public QThread
{
    Q_OBJECT

public:
    ClientThread();

    /// Starts the thread and returns once it can do without the loader's lock. Windows holds that lock while
    /// it unloads a library; a thread that needs it then would never stop. False if the system has no thread
    /// left.
    bool launch();

    /// True on a client thread, from its start to the end of its event loop.
    static bool isCurrent();

protected:
    void run() override;

private:
    void begin();
    void logEventLoop(const char* event);

    base::Semaphore m_hasBegun;
};

#endif
