// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_APPLICATIONRUNNER_H
#define VIGIL_CLIENT_APPLICATIONRUNNER_H

#include <QtGlobal>

#include <atomic>
#include <functional>
#include <memory>

#include "base/ThreadSafety.h"
#include "platform/Platform.h"

QT_BEGIN_NAMESPACE
class QCoreApplication;
class QEventLoop;
class QThread;
QT_END_NAMESPACE

/// The thread of the library's event loop, with the library's QCoreApplication when the process has none.
///
/// Purpose: Qt delivers no event in a process without an application object. Most hosts have none, so the
/// library brings one. In a host that has its own, the runner runs a plain event loop beside it; should the
/// host's go while the library is in use, the runner puts one of its own in its place before the host's
/// destructor returns. Between the two Qt drops every event instead of delivering it, so the client thread is
/// paused meanwhile. The log is open as long as the loop runs.
///
/// Threads: start() and stop() belong to the facade's init() and cleanup().
///
/// Ownership: owned by the facade.
///
/// Failure: start() gives null when the system has no thread to give.
class ApplicationRunner
{
public:
    /// The client thread's rest while the process has no application object.
    struct Pause
    {
        base::Semaphore begun; // released by the client thread when it rests
        base::Semaphore over;  // released when it may go on
    };
    using PauseClient = std::function<void(const std::shared_ptr<Pause>&)>;

    /// Returns when the event loop runs. pauseClient makes the client thread begin the pause; it is called in
    /// the host's thread.
    static std::unique_ptr<ApplicationRunner> start(PauseClient pauseClient);

    ~ApplicationRunner();
    ApplicationRunner(const ApplicationRunner&) = delete;
    ApplicationRunner& operator=(const ApplicationRunner&) = delete;

    /// Qt's object for the runner's thread.
    QThread* thread() const { return m_qtThread; }

    /// True when the system has ended the thread (at the end of a Windows process) or left it behind (in a
    /// forked child) without being asked by stop().
    bool isGone() const { return m_thread->hasEnded(); }

    /// False in a forked child, whose parent goes on.
    bool isOfThisProcess() const { return m_thread->isOfThisProcess(); }

    /// Ends the event loop and waits for the thread, at most timeoutMs milliseconds, without limit when
    /// negative. Returns false when the thread still runs. Called from the runner's own thread it does not
    /// wait.
    bool stop(int timeoutMs);

private:
    struct LoopControl;
    struct HostWatch;

    ApplicationRunner() = default;

    /// QCoreApplication keeps references to both, so they must outlive it.
    struct NoArguments
    {
        int count = 0;
        char* list[1] = {nullptr};
    };

    int run();
    std::unique_ptr<QCoreApplication> createApplication();
    void runLoop();
    void runLoopBesideHost();
    static void hostBeginsToLeave();
    static void hostHasLeft(LoopControl& control);

    static HostWatch& hostWatch();
    static void setHostWatch(const std::shared_ptr<LoopControl>& control);

    /// What other threads reach the loop by. Shared, since the host's destructor may wait here while the
    /// runner is being stopped and destroyed.
    struct LoopControl
    {
        void quit();
        void setLoop(QEventLoop* newLoop);

        base::Semaphore running; // released whenever a loop has begun to run, and at the end
        PauseClient pauseClient;
        const std::shared_ptr<Pause> pause = std::make_shared<Pause>();

    private:
        base::Mutex m_mutex; // held while the loop is told to quit, so that it is there to hear it
        QEventLoop* m_loop VIGIL_GUARDED_BY(m_mutex) = nullptr;
    };

    std::unique_ptr<platform::Thread> m_thread;
    QThread* m_qtThread = nullptr;
    NoArguments m_arguments;
    const std::shared_ptr<LoopControl> m_control = std::make_shared<LoopControl>();
    std::atomic<bool> m_stopRequested{false};
};

#endif
