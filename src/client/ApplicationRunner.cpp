// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ApplicationRunner.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QLoggingCategory>
#include <QThread>

#include <cfenv>
#include <clocale>
#include <string>

#include "base/Logging.h"
#include "base/NeverDestroyed.h"
#include "client/NetworkWarmUp.h"
#include "client/PostedEventDispatcher.h"

namespace {

constexpr int startPollMs = 100;
constexpr int followTimeoutMs = 5000;
constexpr int followPollMs = 1;

/// On some systems QCoreApplication sets the process's locale from the environment. The locale is the host's
/// choice, so it is restored.
class LocaleKeeper
{
public:
    LocaleKeeper() : m_locale(std::setlocale(LC_ALL, nullptr)) {} // NOLINT(concurrency-mt-unsafe)
    ~LocaleKeeper() { std::setlocale(LC_ALL, m_locale.c_str()); } // NOLINT(concurrency-mt-unsafe)
    LocaleKeeper(const LocaleKeeper&) = delete;
    LocaleKeeper& operator=(const LocaleKeeper&) = delete;

private:
    const std::string m_locale;
};

/// Qt warns about an application object outside the first thread that used Qt. The library needs no such
/// thread, and the host can do nothing about it.
class WarningsMuted
{
public:
    WarningsMuted() : m_wasEnabled(category().isWarningEnabled())
    {
        category().setEnabled(QtWarningMsg, false);
    }
    ~WarningsMuted() { category().setEnabled(QtWarningMsg, m_wasEnabled); }
    WarningsMuted(const WarningsMuted&) = delete;
    WarningsMuted& operator=(const WarningsMuted&) = delete;

private:
    static QLoggingCategory& category() { return *QLoggingCategory::defaultCategory(); }

    const bool m_wasEnabled;
};

} // namespace

/// The running loop. Static: Qt calls the post routine without an argument.
struct ApplicationRunner::HostWatch
{
    base::Mutex mutex;
    std::shared_ptr<LoopControl> control VIGIL_GUARDED_BY(mutex);
    std::atomic<QCoreApplication*> application{nullptr}; // the one the runner has chosen
};

std::unique_ptr<ApplicationRunner> ApplicationRunner::start(PauseClient pauseClient)
{
    std::unique_ptr<ApplicationRunner> runner(new ApplicationRunner);
    runner->m_control->pauseClient = std::move(pauseClient);
    runner->m_thread = platform::Thread::start([self = runner.get()] { return self->run(); });
    if (!runner->m_thread)
        return nullptr;
    while (!runner->m_control->running.tryAcquire(1, startPollMs)) {
        if (runner->isGone())
            return nullptr;
    }
    return runner;
}

ApplicationRunner::~ApplicationRunner() = default;

int ApplicationRunner::run()
{
    std::fesetenv(FE_DFL_ENV); // the thread inherits the host's rounding and its traps
    m_qtThread = QThread::currentThread();
    if (platform::qtServesHostLoop())
        m_qtThread->setEventDispatcher(new PostedEventDispatcher);
    chooseApplication();
    base::startLogging();
    warmUpNetwork();
    setHostWatch(m_control);
    while (!m_control->isStopRequested) {
        runLoop();
        if (!m_control->isStopRequested)
            chooseApplication();
    }
    setHostWatch(nullptr);
    qRemovePostRoutine(&ApplicationRunner::hostBeginsToLeave);
    base::stopLogging();
    releaseApplication();
    hostWatch().application = nullptr;
    m_control->running.release(); // in case start() or the host still waits for a loop
    return 0;
}

void ApplicationRunner::chooseApplication()
{
    if (m_application && QCoreApplication::instance() != m_application.get()) {
        base::writeLog(
            QStringLiteral("The application has created its QCoreApplication after its first health "
                           "check. The library goes on beside it."));
        releaseApplication();
    }
    if (!QCoreApplication::instance())
        createApplication();
    qRemovePostRoutine(&ApplicationRunner::hostBeginsToLeave); // Qt forgets it after a call
    qAddPostRoutine(&ApplicationRunner::hostBeginsToLeave);
    hostWatch().application = QCoreApplication::instance();
}

/// Qt ends a set-user-id program that creates an application object, unless told otherwise.
void ApplicationRunner::createApplication()
{
    const LocaleKeeper keeper;
    const WarningsMuted muted;
    const bool isSetuidAllowed = QCoreApplication::isSetuidAllowed();
    QCoreApplication::setSetuidAllowed(true);
    m_application = std::make_unique<QCoreApplication>(m_arguments.count, m_arguments.list);
    QCoreApplication::setSetuidAllowed(isSetuidAllowed);
}

/// Qt knows one object at a time, the newest. The destructor of an older one would take it out of use.
void ApplicationRunner::releaseApplication()
{
    if (QCoreApplication::instance() == m_application.get())
        m_application.reset();
    else
        static_cast<void>(m_application.release());
}

ApplicationRunner::HostWatch& ApplicationRunner::hostWatch()
{
    static base::NeverDestroyed<HostWatch> watch;
    return watch.get();
}

void ApplicationRunner::setHostWatch(const std::shared_ptr<LoopControl>& control)
{
    const base::MutexLock lock(hostWatch().mutex);
    hostWatch().control = control;
}

std::shared_ptr<ApplicationRunner::LoopControl> ApplicationRunner::runningControl()
{
    const base::MutexLock lock(hostWatch().mutex);
    return hostWatch().control;
}

/// Runs at the start of the destructor of the host's object, in the host's thread, while Qt still delivers
/// events.
void ApplicationRunner::hostBeginsToLeave()
{
    const std::shared_ptr<LoopControl> control = runningControl();
    if (!control)
        return;
    QObject::connect(QCoreApplication::instance(), &QObject::destroyed, [control] { hostHasLeft(*control); });
    control->pauseClient(control->pause);
}

/// Runs at its end, when the process has no application object.
void ApplicationRunner::hostHasLeft(LoopControl& control)
{
    control.follow();
    control.pause->over.release();
}

void ApplicationRunner::followHost()
{
    if (hostWatch().application == QCoreApplication::instance())
        return;
    if (const std::shared_ptr<LoopControl> control = runningControl())
        control->follow();
}

void ApplicationRunner::runLoop()
{
    QEventLoop loop;
    m_control->setLoop(&loop);
    // Posted to the loop itself: a quit() before exec() is lost.
    const auto sayRunning = [this, &loop] {
        m_control->running.release();
        if (m_control->isStopRequested)
            loop.quit();
    };
    QMetaObject::invokeMethod(&loop, sayRunning, Qt::QueuedConnection);
    loop.exec();
    m_control->setLoop(nullptr);
}

bool ApplicationRunner::stop(int timeoutMs)
{
    m_control->isStopRequested = true;
    m_control->quit();
    return !m_thread->isCurrent() && m_thread->join(timeoutMs);
}

void ApplicationRunner::LoopControl::quit()
{
    const base::MutexLock lock(m_mutex);
    if (m_loop)
        m_loop->quit();
}

void ApplicationRunner::LoopControl::setLoop(QEventLoop* newLoop)
{
    const base::MutexLock lock(m_mutex);
    m_loop = newLoop;
}

void ApplicationRunner::LoopControl::follow()
{
    const QDeadlineTimer limit(followTimeoutMs);
    while (hostWatch().application != QCoreApplication::instance() && !isStopRequested &&
           !limit.hasExpired()) {
        quit();
        platform::sleepMs(followPollMs);
    }
}
