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

/// The thread of the library's event loop, with a QCoreApplication if the process has none.
///
/// Purpose: Qt delivers events only while the process has an application object. Most hosts have none, so the
/// runner creates one. The log is open while the loop runs.
///
///     application object  | event                       | action
///     --------------------|-----------------------------|----------------------------------------------
///     none                | start()                     | the runner creates its own
///     the host's          | start()                     | the runner runs a plain loop in its own thread
///     the host's          | the host destroys it        | the runner creates its own before the host's
///                         |                             | destructor returns; the client is paused meanwhile
///     the runner's        | the host creates another    | followHost() notices: the runner leaves its own
///                         |                             | object alone for good, and runs a plain loop
///     any                 | stop()                      | the runner destroys its own object
///
/// Threads: start() and stop() belong to the facade's init() and cleanup().
///
/// Ownership: owned by the facade. An object the runner has left alone is never destroyed: its destructor
/// would take the host's object out of use.
///
/// Failure: start() returns null if the system has no thread left.
class ApplicationRunner
{
public:
    /// Pauses the client thread while the process has no application object.
    struct Pause
    {
        base::Semaphore begun; // released by the client thread once it is paused
        base::Semaphore over;  // released when it may continue
    };
    using PauseClient = std::function<void(const std::shared_ptr<Pause>&)>;

    /// Returns once the event loop runs. pauseClient starts the pause; it is called in the host's thread.
    static std::unique_ptr<ApplicationRunner> start(PauseClient pauseClient);

    ~ApplicationRunner();
    ApplicationRunner(const ApplicationRunner&) = delete;
    ApplicationRunner& operator=(const ApplicationRunner&) = delete;

    /// Qt's object for the runner's thread.
    QThread* thread() const { return m_qtThread; }

    /// True if the thread is gone without stop(): at the end of a Windows process, or in a forked child.
    bool isGone() const { return m_thread->hasEnded(); }

    /// False in a forked child.
    bool isOfThisProcess() const { return m_thread->isOfThisProcess(); }

    /// Looks for an application object that the host has created since the last call. Cheap: call it before
    /// events are posted. Waits until the runner has followed.
    static void followHost();

    /// Ends the event loop and waits for the thread, at most timeoutMs milliseconds; negative means no limit.
    /// False if the thread still runs. Does not wait on the runner's own thread.
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
    void chooseApplication();
    void createApplication();
    void releaseApplication();
    void runLoop();
    static void hostBeginsToLeave();
    static void hostHasLeft(LoopControl& control);

    static HostWatch& hostWatch();
    static void setHostWatch(const std::shared_ptr<LoopControl>& control);
    static std::shared_ptr<LoopControl> runningControl();

    /// Access to the loop for other threads. Shared: the host's destructor may wait here while the runner is
    /// destroyed.
    struct LoopControl
    {
        void quit();
        void setLoop(QEventLoop* newLoop);

        /// Makes the runner choose an application object again, if the process has another one by now.
        void follow();

        base::Semaphore running; // released when a loop starts, and at the end
        std::atomic<bool> isStopRequested{false};
        PauseClient pauseClient;
        const std::shared_ptr<Pause> pause = std::make_shared<Pause>();

    private:
        base::Mutex m_mutex; // held during quit(), so the loop cannot be destroyed meanwhile
        QEventLoop* m_loop VIGIL_GUARDED_BY(m_mutex) = nullptr;
    };

    std::unique_ptr<platform::Thread> m_thread;
    QThread* m_qtThread = nullptr;
    NoArguments m_arguments;
    const std::shared_ptr<LoopControl> m_control = std::make_shared<LoopControl>();
    std::unique_ptr<QCoreApplication> m_application; // the runner's own
};

#endif
