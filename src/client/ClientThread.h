// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_CLIENTTHREAD_H
#define VIGIL_CLIENT_CLIENTTHREAD_H

#include <QThread>

/// The thread in which the Client lives, with its socket, its timer and all calls into the application's
/// callbacks. Only run() executes in it; the object itself belongs to the thread of the library's event loop.
///
/// An interruption request tells the client to stop sending, so that it comes to its exit soon.
class ClientThread : public QThread
{
    Q_OBJECT

public:
    ClientThread();

    /// True on a client thread, from its start to the end of its event loop.
    static bool isCurrent();

protected:
    void run() override;

private:
    void logEventLoop(const char* event);
};

#endif
