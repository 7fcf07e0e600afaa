// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/ServiceManager.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include <windows.h>

#include "agent/core/ServiceAccount.h"
#include "agent/process/ServiceFolders.h"
#include "agent/process/ServiceLog.h"

namespace agent {

namespace {

constexpr std::chrono::seconds attachDeadline(30); // as Windows gives a new service
constexpr std::chrono::seconds detachDeadline(2);
constexpr DWORD startHintMs = 30'000; // the system looks up names of receivers, one after the other
constexpr DWORD stopHintMs = 5'000;

/// The link to the service manager. It calls back without an argument, so there is one for the process.
///
/// Threads: any. The main thread serves; two threads belong to the system's code: one waits for controls,
/// the other is the service's own, and only waits for the end.
///
///                start()        attached        tellStopped()      both threads done
///     Detached ─────────▶ Attaching ──────▶ Attached ──────▶ Stopped ──────▶ Ended
///                              └─ refused ─────────────────────────────────▶ Ended
class Link
{
public:
    enum class State { Detached, Attaching, Attached, Stopped, Ended };

    static Link& instance()
    {
        static auto* const link = new Link; // never destroyed: the system's threads may use it
        return *link;
    }

    Error start()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_state = State::Attaching;
        std::thread([] { runDispatcher(); }).detach();
        m_changed.wait_for(lock, attachDeadline, [this] { return m_state != State::Attaching; });
        if (m_state == State::Attached)
            return {};
        return Error(
            QStringLiteral("--service: the service manager has not started this process (%1). Use sc "
                           "start %2, or leave the option out")
                .arg(qt_error_string(static_cast<int>(m_problem)), serviceAccount::service()));
    }

    void setReceiver(ServiceManager* receiver)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_receiver = receiver;
    }

    /// Each report of a pending state counts as a step forward.
    void report(DWORD serviceState, DWORD hintMs = 0, DWORD exitCode = 0)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        reportLocked(serviceState, hintMs, exitCode);
    }

    void end(int exitCode)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (m_state != State::Attached)
            return;
        reportLocked(SERVICE_STOPPED, 0, static_cast<DWORD>(exitCode));
        setState(State::Stopped);
        m_changed.wait_for(lock, detachDeadline, [this] { return m_state == State::Ended; });
    }

private:
    static void runDispatcher()
    {
        std::wstring name = serviceAccount::service().toStdWString();
        const SERVICE_TABLE_ENTRYW services[] = {{name.data(), &Link::runService}, {nullptr, nullptr}};
        const bool isDone = StartServiceCtrlDispatcherW(services) != 0;
        const DWORD problem = isDone ? NO_ERROR : GetLastError();
        Link& link = instance();
        const std::lock_guard<std::mutex> lock(link.m_mutex);
        link.m_problem = problem;
        link.setState(State::Ended);
    }

    /// The service counts as ended once this returns.
    static void WINAPI runService(DWORD, LPWSTR*)
    {
        Link& link = instance();
        const std::wstring name = serviceAccount::service().toStdWString();
        std::unique_lock<std::mutex> lock(link.m_mutex);
        link.m_handle = RegisterServiceCtrlHandlerExW(name.c_str(), &Link::handleControl, nullptr);
        link.reportLocked(SERVICE_START_PENDING, startHintMs, 0);
        link.setState(State::Attached);
        link.m_changed.wait(lock, [&link] { return link.m_state != State::Attached; });
    }

    static DWORD WINAPI handleControl(DWORD control, DWORD, LPVOID, LPVOID)
    {
        switch (control) {
        case SERVICE_CONTROL_STOP:
        case SERVICE_CONTROL_SHUTDOWN:
            instance().report(SERVICE_STOP_PENDING, stopHintMs);
            instance().post(&ServiceManager::endRequested);
            return NO_ERROR;
        case SERVICE_CONTROL_PARAMCHANGE:
            instance().post(&ServiceManager::reloadRequested);
            return NO_ERROR;
        case SERVICE_CONTROL_INTERROGATE:
            return NO_ERROR;
        default:
            return ERROR_CALL_NOT_IMPLEMENTED;
        }
    }

    void post(void (ServiceManager::*signal)())
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_receiver)
            QMetaObject::invokeMethod(m_receiver, signal, Qt::QueuedConnection);
    }

    void reportLocked(DWORD serviceState, DWORD hintMs, DWORD exitCode)
    {
        if (!m_handle)
            return;
        const bool isPending = serviceState == SERVICE_START_PENDING || serviceState == SERVICE_STOP_PENDING;
        m_step = isPending ? m_step + 1 : 0;
        SERVICE_STATUS status = {};
        status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
        status.dwCurrentState = serviceState;
        status.dwControlsAccepted =
            serviceState == SERVICE_RUNNING
                ? SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_SHUTDOWN | SERVICE_ACCEPT_PARAMCHANGE
                : 0;
        status.dwWin32ExitCode = exitCode == 0 ? NO_ERROR : ERROR_SERVICE_SPECIFIC_ERROR;
        status.dwServiceSpecificExitCode = exitCode;
        status.dwCheckPoint = m_step;
        status.dwWaitHint = hintMs;
        SetServiceStatus(m_handle, &status);
    }

    void setState(State state)
    {
        m_state = state;
        m_changed.notify_all();
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    State m_state = State::Detached;
    SERVICE_STATUS_HANDLE m_handle = nullptr;
    DWORD m_step = 0; // the checkpoint of a pending state
    DWORD m_problem = 0;
    ServiceManager* m_receiver = nullptr;
};

} // namespace

struct ServiceManager::System
{
    ServiceLog* log = nullptr; // never destroyed, see there
};

ServiceManager::ServiceManager(Clock&) : m_system(std::make_unique<System>()) {}

ServiceManager::~ServiceManager()
{
    Link::instance().setReceiver(nullptr);
}

Error ServiceManager::attach()
{
    if (Error error = Link::instance().start())
        return error;
    Link::instance().setReceiver(this);
    m_system->log = new ServiceLog(serviceFolders::log());
    log::setSink([log = m_system->log](log::Severity severity, const QString& text) {
        return log->write(severity, text);
    });
    Link::instance().report(SERVICE_START_PENDING, startHintMs);
    return {};
}

void ServiceManager::tellReady()
{
    Link::instance().report(SERVICE_RUNNING);
}

void ServiceManager::tellStatus(const QString&) {}

void ServiceManager::tellStopping()
{
    Link::instance().report(SERVICE_STOP_PENDING, stopHintMs);
}

void ServiceManager::tellStopped(int exitCode)
{
    if (m_system->log)
        m_system->log->waitUntilWritten();
    Link::instance().end(exitCode);
}

} // namespace agent
