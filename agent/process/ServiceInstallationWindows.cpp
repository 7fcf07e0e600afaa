// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/ServiceInstallation.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <array>

#include <windows.h>

#include "agent/core/FileRights.h"
#include "agent/core/Log.h"
#include "agent/core/ServiceAccount.h"
#include "agent/core/SystemClock.h"
#include "agent/process/ArgumentLine.h"
#include "agent/process/ServiceFolders.h"

namespace agent::serviceInstallation {

namespace {

constexpr qint64 stopDeadlineMs = 30'000;
constexpr DWORD stopPollMs = 100;

const wchar_t* wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

/// A handle of the service manager.
class Handle
{
public:
    explicit Handle(SC_HANDLE handle) : m_handle(handle) {}
    ~Handle()
    {
        if (m_handle)
            CloseServiceHandle(m_handle);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    explicit operator bool() const { return m_handle != nullptr; }
    SC_HANDLE get() const { return m_handle; }

private:
    SC_HANDLE m_handle;
};

Outcome failure(const QString& text)
{
    return {Outcome::failed, text};
}

/// Why a call of the system failed.
Outcome systemFailure(const QString& what, DWORD problem)
{
    const QString service = serviceAccount::service();
    switch (problem) {
    case ERROR_ACCESS_DENIED:
        return {Outcome::rightsLacking,
                QStringLiteral("%1: this needs the rights of an administrator. Open the command prompt with "
                               "\"Run as administrator\"")
                    .arg(what)};
    case ERROR_SERVICE_EXISTS:
        return {Outcome::existsAlready,
                QStringLiteral("the service %1 exists already. To change its options, "
                               "remove it first with --uninstall-service")
                    .arg(service)};
    case ERROR_SERVICE_DOES_NOT_EXIST:
        return {Outcome::doesNotExist, QStringLiteral("there is no service %1").arg(service)};
    case ERROR_SERVICE_MARKED_FOR_DELETE:
        return failure(
            QStringLiteral("the service %1 is being removed. Close the windows that show services, "
                           "and try again")
                .arg(service));
    default:
        return failure(QStringLiteral("%1: %2").arg(what, qt_error_string(static_cast<int>(problem))));
    }
}

QString eventSourceKey()
{
    return QStringLiteral("SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\") +
           serviceAccount::service();
}

QString programFile()
{
    return QDir::toNativeSeparators(QCoreApplication::applicationFilePath());
}

LSTATUS setNumber(HKEY key, const wchar_t* name, DWORD value)
{
    return RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
}

LSTATUS setText(HKEY key, const wchar_t* name, const QString& value)
{
    const auto size = static_cast<DWORD>((value.size() + 1) * static_cast<int>(sizeof(wchar_t)));
    return RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.utf16()), size);
}

/// The event viewer finds the texts of the messages in the program.
void registerEventSource()
{
    constexpr DWORD allTypes = EVENTLOG_ERROR_TYPE | EVENTLOG_WARNING_TYPE | EVENTLOG_INFORMATION_TYPE;
    HKEY key = nullptr;
    LSTATUS problem = RegCreateKeyExW(HKEY_LOCAL_MACHINE, wide(eventSourceKey()), 0, nullptr, 0,
                                      KEY_SET_VALUE, nullptr, &key, nullptr);
    if (problem == ERROR_SUCCESS) {
        problem = setText(key, L"EventMessageFile", programFile());
        if (problem == ERROR_SUCCESS)
            problem = setNumber(key, L"TypesSupported", allTypes);
        RegCloseKey(key);
    }
    if (problem != ERROR_SUCCESS)
        log::warning(QStringLiteral("the event viewer will show the service's lines without their texts: %1")
                         .arg(qt_error_string(static_cast<int>(problem))));
}

/// A service without such a setting works, too.
void set(const Handle& service, DWORD level, void* setting, const QString& name)
{
    if (!ChangeServiceConfig2W(service.get(), level, setting))
        log::warning(QStringLiteral("the service manager does not take the setting \"%1\": %2")
                         .arg(name, qt_error_string(static_cast<int>(GetLastError()))));
}

void configure(const Handle& service)
{
    wchar_t text[] = L"Serves the health of this host's applications to SNMP managers.";
    SERVICE_DESCRIPTIONW description = {text};
    set(service, SERVICE_CONFIG_DESCRIPTION, &description, QStringLiteral("description"));

    SERVICE_DELAYED_AUTO_START_INFO delayed = {TRUE};
    set(service, SERVICE_CONFIG_DELAYED_AUTO_START_INFO, &delayed, QStringLiteral("delayed start"));

    constexpr DWORD dayInSeconds = 86'400;
    std::array<SC_ACTION, 3> actions = {
        {{SC_ACTION_RESTART, 1000}, {SC_ACTION_RESTART, 5000}, {SC_ACTION_RESTART, 60'000}}};
    SERVICE_FAILURE_ACTIONSW failure = {dayInSeconds, nullptr, nullptr, actions.size(), actions.data()};
    set(service, SERVICE_CONFIG_FAILURE_ACTIONS, &failure, QStringLiteral("restart"));
    SERVICE_FAILURE_ACTIONS_FLAG alsoOnErrors = {TRUE};
    set(service, SERVICE_CONFIG_FAILURE_ACTIONS_FLAG, &alsoOnErrors,
        QStringLiteral("restart after an error"));

    SERVICE_SID_INFO account = {SERVICE_SID_TYPE_UNRESTRICTED};
    set(service, SERVICE_CONFIG_SERVICE_SID_INFO, &account, QStringLiteral("own account"));
    wchar_t privileges[] = L"SeChangeNotifyPrivilege\0"; // entering folders; the list ends with an empty name
    SERVICE_REQUIRED_PRIVILEGES_INFOW fewest = {privileges};
    set(service, SERVICE_CONFIG_REQUIRED_PRIVILEGES_INFO, &fewest, QStringLiteral("fewest privileges"));
}

Error makeFolders()
{
    using fileRights::ServiceMay;
    if (Error error = fileRights::makeFolder(serviceFolders::root(), ServiceMay::Read))
        return error;
    if (Error error = fileRights::makeFolder(serviceFolders::state(), ServiceMay::Change))
        return error;
    return fileRights::makeFolder(serviceFolders::log(), ServiceMay::Change);
}

/// A configuration of an earlier installation stays.
Error makeConfigFile()
{
    const QString path = serviceFolders::configFile();
    if (QFile::exists(path))
        return {};
    QFile example(QStringLiteral(":/service/vigil-agent.conf"));
    if (!example.open(QIODevice::ReadOnly))
        return Error(QStringLiteral("cannot make the file %1: %2").arg(path, example.errorString()));
    return fileRights::makeFile(path, example.readAll().replace('\n', "\r\n"), fileRights::ServiceMay::Read);
}

QString commandLine(const Options& options)
{
    QStringList arguments = QStringList(programFile()) + options.serviceArguments;
    if (options.configFile.isEmpty())
        arguments << QStringLiteral("--config") << serviceFolders::configFile();
    if (options.stateDirectory.isEmpty())
        arguments << QStringLiteral("--state-directory") << serviceFolders::state();
    return argumentLine(arguments);
}

/// True once the service has stopped.
bool stop(const Handle& service)
{
    const SystemClock clock;
    SERVICE_STATUS status = {};
    ControlService(service.get(), SERVICE_CONTROL_STOP, &status); // fails if it has stopped already
    while (QueryServiceStatus(service.get(), &status) && status.dwCurrentState != SERVICE_STOPPED) {
        if (clock.elapsedMs() > stopDeadlineMs)
            return false;
        Sleep(stopPollMs);
    }
    return true;
}

} // namespace

bool isSupported()
{
    return true;
}

Outcome install(const Options& options)
{
    const QString what = QStringLiteral("cannot install the service");
    const Handle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT | SC_MANAGER_CREATE_SERVICE));
    if (!manager)
        return systemFailure(what, GetLastError());
    const QString name = serviceAccount::service();
    if (Handle(OpenServiceW(manager.get(), wide(name), SERVICE_QUERY_STATUS)))
        return systemFailure(what, ERROR_SERVICE_EXISTS);
    if (const Error error = makeFolders())
        return failure(error.text());
    if (const Error error = options.configFile.isEmpty() ? makeConfigFile() : Error())
        return failure(error.text());
    const Handle service(CreateServiceW(manager.get(), wide(name), L"Vigil SNMP agent", SERVICE_ALL_ACCESS,
                                        SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START, SERVICE_ERROR_NORMAL,
                                        wide(commandLine(options)), nullptr, nullptr, nullptr,
                                        wide(serviceAccount::name()), nullptr));
    if (!service)
        return systemFailure(what, GetLastError());
    configure(service);
    registerEventSource();
    const QString config = options.configFile.isEmpty() ? serviceFolders::configFile() : options.configFile;
    return {0,
            QStringLiteral("The service %1 is installed and starts with the system. Its configuration is %2. "
                           "Start it now with: sc start %1")
                .arg(name, QDir::toNativeSeparators(config))};
}

Outcome uninstall()
{
    const QString what = QStringLiteral("cannot remove the service");
    const QString name = serviceAccount::service();
    const Handle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    if (!manager)
        return systemFailure(what, GetLastError());
    const Handle service(
        OpenServiceW(manager.get(), wide(name), SERVICE_STOP | SERVICE_QUERY_STATUS | DELETE));
    if (!service)
        return systemFailure(what, GetLastError());
    if (!stop(service))
        return failure(
            QStringLiteral("cannot remove the service: it does not stop. End its process, and try again"));
    if (!DeleteService(service.get()))
        return systemFailure(what, GetLastError());
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, wide(eventSourceKey()));
    return {0, QStringLiteral("The service %1 is removed. Its configuration and its state in %2 stay")
                   .arg(name, serviceFolders::root())};
}

} // namespace agent::serviceInstallation
