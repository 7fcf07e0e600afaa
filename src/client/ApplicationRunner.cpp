// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ApplicationRunner.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>

#include <clocale>
#include <string>

#include "base/Logging.h"
#include "base/NeverDestroyed.h"
#include "client/NetworkWarmUp.h"

namespace {

constexpr int startPollMs = 100;
constexpr int takeOverTimeoutMs = 5000;

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

} // namespace

/// The runner beside a host's application object. Static: Qt calls the post routine without an argument.
struct ApplicationRunner::HostWatch
{
    base::Mutex mutex;
    std::shared_ptr<LoopControl> control VIGIL_GUARDED_BY(mutex);
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
    std::unique_ptr<QCoreApplication> application;
    const bool hasHost = QCoreApplication::instance() != nullptr;
    if (!hasHost)
        application = createApplication();
    m_qtThread = QThread::currentThread();
    base::startLogging();
    warmUpNetwork();
    if (hasHost) {
        runLoopBesideHost();
        if (!m_stopRequested)
            application = createApplication();
    }
    if (!m_stopRequested)
        runLoop();
    base::stopLogging();
    m_control->running.release(); // in case start() or the host still waits for a loop
    return 0;
}

std::unique_ptr<QCoreApplication> ApplicationRunner::createApplication()
{
    const LocaleKeeper keeper;
    return std::make_unique<QCoreApplication>(m_arguments.count, m_arguments.list);
}

/// Returns after stop(), or when the host destroys its application object. The host's destructor then waits
/// until the library's own object is in place.
void ApplicationRunner::runLoopBesideHost()
{
    setHostWatch(m_control);
    qAddPostRoutine(&ApplicationRunner::hostBeginsToLeave);
    const auto watch = QObject::connect(QCoreApplication::instance(), &QObject::destroyed,
                                        [control = m_control] { hostHasLeft(*control); });
    runLoop();
    QObject::disconnect(watch);
    qRemovePostRoutine(&ApplicationRunner::hostBeginsToLeave);
    setHostWatch(nullptr);
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

/// Runs at the start of the destructor, while Qt still delivers events.
void ApplicationRunner::hostBeginsToLeave()
{
    std::shared_ptr<LoopControl> control;
    {
        const base::MutexLock lock(hostWatch().mutex);
        control = hostWatch().control;
    }
    if (control)
        control->pauseClient(control->pause);
}

/// Runs at its end, when the process has no application object.
void ApplicationRunner::hostHasLeft(LoopControl& control)
{
    control.quit();
    control.running.tryAcquire(1, takeOverTimeoutMs);
    control.pause->over.release();
}

void ApplicationRunner::runLoop()
{
    QEventLoop loop;
    // Posted to the loop itself: a quit() before exec() would be lost.
    const auto sayRunning = [this, &loop] {
        m_control->setLoop(&loop);
        m_control->running.release();
        if (m_stopRequested)
            loop.quit();
    };
    QMetaObject::invokeMethod(&loop, sayRunning, Qt::QueuedConnection);
    loop.exec();
    m_control->setLoop(nullptr);
}

bool ApplicationRunner::stop(int timeoutMs)
{
    m_stopRequested = true;
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
