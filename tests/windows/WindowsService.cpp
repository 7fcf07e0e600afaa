// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "WindowsService.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <functional>
#include <vector>

#include "agent/process/ServiceFolders.h"
#include "support/Deadline.h"
#include "support/RunUntil.h"

namespace windows {

namespace {

/// Calls with the service, and returns false if there is none.
bool withService(const std::wstring& name, DWORD rights, const std::function<bool(SC_HANDLE)>& call)
{
    SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
    SC_HANDLE service = OpenServiceW(manager, name.c_str(), rights);
    const bool result = service && call(service);
    if (service)
        CloseServiceHandle(service);
    CloseServiceHandle(manager);
    return result;
}

void withConfiguration(const std::wstring& name,
                       const std::function<void(const QUERY_SERVICE_CONFIGW&)>& call)
{
    withService(name, SERVICE_QUERY_CONFIG, [&](SC_HANDLE service) {
        constexpr DWORD most = 8192; // the system's limit
        std::vector<char> bytes(most);
        auto* configuration = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(bytes.data());
        DWORD size = 0;
        if (!QueryServiceConfigW(service, configuration, most, &size))
            return false;
        call(*configuration);
        return true;
    });
}

} // namespace

WindowsService::WindowsService(const QString& name) : m_name(name.toStdWString()) {}

bool WindowsService::create(const QString& commandLine) const
{
    SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CREATE_SERVICE);
    SC_HANDLE service =
        CreateServiceW(manager, m_name.c_str(), nullptr, SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS,
                       SERVICE_DEMAND_START, SERVICE_ERROR_IGNORE, commandLine.toStdWString().c_str(),
                       nullptr, nullptr, nullptr, nullptr, nullptr);
    const bool isMade = service != nullptr;
    CloseServiceHandle(service);
    CloseServiceHandle(manager);
    return isMade;
}

void WindowsService::remove() const
{
    if (control(SERVICE_CONTROL_STOP) == NO_ERROR)
        waitFor(SERVICE_STOPPED);
    withService(m_name, DELETE, [](SC_HANDLE service) { return DeleteService(service) != 0; });
}

WindowsService::Outcome WindowsService::run(const QStringList& arguments, const QString& folder) const
{
    QProcess process;
    const QString program =
        folder.isEmpty() ? QStringLiteral(VIGIL_AGENT_PROGRAM) : folder + QStringLiteral("/vigil-agent.exe");
    process.start(program, arguments);
    Outcome outcome;
    if (!process.waitForFinished(support::deadlineMs))
        process.kill();
    else if (process.exitStatus() == QProcess::NormalExit)
        outcome.exitCode = process.exitCode();
    outcome.out = process.readAllStandardOutput();
    outcome.err = process.readAllStandardError();
    return outcome;
}

void WindowsService::clear() const
{
    run({QStringLiteral("--uninstall-service")});
    QDir(agent::serviceFolders::root()).removeRecursively();
}

bool WindowsService::start() const
{
    const bool isStarting = withService(
        m_name, SERVICE_START, [](SC_HANDLE service) { return StartServiceW(service, 0, nullptr) != 0; });
    support::runUntil([this] {
        const DWORD state = status().dwCurrentState;
        return state == SERVICE_RUNNING || state == SERVICE_STOPPED;
    });
    return isStarting && status().dwCurrentState == SERVICE_RUNNING;
}

bool WindowsService::waitFor(DWORD state) const
{
    return support::runUntil([this, state] { return status().dwCurrentState == state; });
}

DWORD WindowsService::control(DWORD code) const
{
    DWORD problem = ERROR_SERVICE_DOES_NOT_EXIST;
    withService(m_name, SERVICE_ALL_ACCESS, [&](SC_HANDLE service) {
        SERVICE_STATUS unused = {};
        problem = ControlService(service, code, &unused) ? NO_ERROR : GetLastError();
        return true;
    });
    return problem;
}

bool WindowsService::crash() const
{
    HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, status().dwProcessId);
    constexpr UINT exitCode = 77;
    const bool isEnded = process && TerminateProcess(process, exitCode);
    CloseHandle(process);
    return isEnded;
}

SERVICE_STATUS_PROCESS WindowsService::status() const
{
    SERVICE_STATUS_PROCESS status = {};
    withService(m_name, SERVICE_QUERY_STATUS, [&](SC_HANDLE service) {
        DWORD size = 0;
        return QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                                    sizeof status, &size) != 0;
    });
    return status;
}

QString WindowsService::commandLine() const
{
    QString text;
    withConfiguration(m_name, [&](const QUERY_SERVICE_CONFIGW& configuration) {
        text = QString::fromWCharArray(configuration.lpBinaryPathName);
    });
    return text;
}

QString WindowsService::account() const
{
    QString text;
    withConfiguration(m_name, [&](const QUERY_SERVICE_CONFIGW& configuration) {
        text = QString::fromWCharArray(configuration.lpServiceStartName);
    });
    return text;
}

DWORD WindowsService::startType() const
{
    DWORD type = 0;
    withConfiguration(m_name,
                      [&](const QUERY_SERVICE_CONFIGW& configuration) { type = configuration.dwStartType; });
    return type;
}

QByteArray WindowsService::log() const
{
    QByteArray lines;
    const QDir folder(agent::serviceFolders::log());
    for (const QString& name : folder.entryList(QDir::Files, QDir::Name)) {
        QFile file(folder.filePath(name));
        if (file.open(QIODevice::ReadOnly))
            lines += file.readAll();
    }
    return lines;
}

bool WindowsService::waitForLog(const QByteArray& text, int times) const
{
    return support::runUntil([&] { return log().count(text) >= times; });
}

} // namespace windows
