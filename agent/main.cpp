// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <QCoreApplication>

#include <cstdlib>
#include <exception>
#include <memory>

#include "agent/Agent.h"
#include "agent/core/Descriptors.h"
#include "agent/core/Log.h"
#include "agent/core/StandardError.h"
#include "agent/netsnmp/HostLookup.h"
#include "agent/netsnmp/SnmpReader.h"
#include "agent/process/CommandLine.h"
#include "agent/process/ServiceInstallation.h"
#include "agent/process/ServiceManager.h"
#include "agent/process/Signals.h"
#include "agent/show/HealthReport.h"

namespace {

/// The first of the directories that systemd names in a variable.
QString directoryIn(const char* variable)
{
    return qEnvironmentVariable(variable).section(QLatin1Char(':'), 0, 0);
}

QString controlPath()
{
    const QString directory = directoryIn("RUNTIME_DIRECTORY");
    return directory.isEmpty() ? QString() : directory + QStringLiteral("/control");
}

/// The exit codes, for the operator's scripts; serviceInstallation::Outcome has more.
constexpr int cannotServe = 1;
constexpr int wrongOption = 2;

int failed(const QString& text, int exitCode)
{
    agent::log::error(text);
    return exitCode;
}

int print(const QString& text)
{
    const agent::Error error = agent::standardOutput::print(text);
    return error ? failed(error.text(), cannotServe) : 0;
}

agent::Error configError(const agent::Options& options)
{
    agent::SystemClock clock;
    agent::SnmpEngine engine({QStringLiteral("none"), options.configFile, {}, options.subtree}, clock);
    return engine.check();
}

int checkConfig(const agent::Options& options)
{
    if (const agent::Error error = configError(options))
        return failed(error.text(), cannotServe);
    return print(QStringLiteral("%1: correct\n").arg(options.configFile));
}

int show(const agent::Options& options)
{
    agent::SnmpReader reader;
    agent::ServedObjects objects;
    agent::Error error = reader.open(options.showAddress, options.community);
    if (!error)
        error = reader.walk(agent::agentMibRoot(), objects);
    if (!error && objects.empty())
        error = agent::Error(
            QStringLiteral(
                "the SNMP service at %1 answers, but serves nothing of vigil-agent to this community. "
                "Check the access in its configuration")
                .arg(options.showAddress));
    if (error)
        return failed(error.text(), cannotServe);
    return print(agent::healthReport(objects));
}

int reported(const agent::serviceInstallation::Outcome& outcome)
{
    if (outcome.exitCode != 0)
        return failed(outcome.text, outcome.exitCode);
    return print(outcome.text + QLatin1Char('\n'));
}

int installService(const agent::Options& options)
{
    if (!options.configFile.isEmpty()) {
        if (const agent::Error error = configError(options))
            return failed(error.text(), cannotServe);
    }
    return reported(agent::serviceInstallation::install(options));
}

/// Windows tells a service of each user who logs off, too, so its manager alone asks it to end.
std::unique_ptr<agent::Signals> watchSignals(const agent::Options& options,
                                             agent::ServiceManager& serviceManager)
{
    if (options.isService)
        return nullptr;
    auto signalWatch = std::make_unique<agent::Signals>();
    QObject::connect(signalWatch.get(), &agent::Signals::endRequested, &serviceManager,
                     &agent::ServiceManager::endRequested);
    QObject::connect(signalWatch.get(), &agent::Signals::reloadRequested, &serviceManager,
                     &agent::ServiceManager::reloadRequested);
    return signalWatch;
}

int serve(const agent::Options& options, agent::ServiceManager& serviceManager)
{
    const auto signalWatch = watchSignals(options, serviceManager);
    QObject::connect(&serviceManager, &agent::ServiceManager::endRequested, qApp, &QCoreApplication::quit);
    agent::Agent agent(options);
    if (const agent::Error error = agent.start())
        return failed(error.text(), cannotServe);
    QObject::connect(&serviceManager, &agent::ServiceManager::reloadRequested, qApp, [&] { agent.reload(); });
    agent.setStatusListener([&](const QString& status) { serviceManager.tellStatus(status); });
    serviceManager.tellReady();
    const int exitCode = QCoreApplication::exec();
    agent.saveState();
    serviceManager.tellStopping();
    agent::log::info(QStringLiteral("ending"));
    return exitCode;
}

agent::Options systemDefaults()
{
    agent::Options options;
    options.agentxAddress = agent::SnmpEngine::defaultAgentxAddress();
    options.canJoinMaster = !options.agentxAddress.isEmpty();
    options.canBeService = agent::serviceInstallation::isSupported();
    options.stateDirectory = directoryIn("STATE_DIRECTORY");
    options.controlPath = controlPath();
    return options;
}

int run(agent::Options& options, agent::ServiceManager& serviceManager)
{
    agent::log::setVerbose(options.isVerbose);
    switch (options.task) {
    case agent::Options::Task::CheckConfig:
        return checkConfig(options);
    case agent::Options::Task::Show:
        return show(options);
    case agent::Options::Task::InstallService:
        return installService(options);
    case agent::Options::Task::UninstallService:
        return reported(agent::serviceInstallation::uninstall());
    case agent::Options::Task::Serve:
        break;
    }
    if (const agent::Error error = agent::takePassedSocket(options.passedSocket))
        return failed(error.text(), cannotServe);
    return serve(options, serviceManager);
}

/// The whole life of the process. Each end before it serves leaves a line.
int live(agent::ServiceManager& serviceManager)
{
    agent::Options options = systemDefaults();
    QString output;
    const agent::Error error = agent::readCommandLine(QCoreApplication::arguments(), options, output);
    if (options.isService) {
        if (const agent::Error problem = serviceManager.attach())
            return failed(problem.text(), cannotServe);
    }
    if (error)
        return failed(error.text(), wrongOption);
    if (!output.isEmpty())
        return print(output);
    return run(options, serviceManager);
}

/// Does not return if the system is looking up a name: Qt would wait for a silent name server.
int ended(int exitCode)
{
    agent::standardError::waitUntilWritten();
    if (agent::HostLookup::isSystemBusy())
        std::_Exit(exitCode);
    return exitCode;
}

} // namespace

int main(int argc, char** argv)
{
    agent::descriptors::openStandardStreams();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vigil-agent"));
    agent::SystemClock clock;
    agent::ServiceManager serviceManager(clock);
    int exitCode = cannotServe;
    try {
        exitCode = live(serviceManager);
    } catch (const std::exception& exception) {
        agent::log::error(
            QStringLiteral("the agent has to end: %1").arg(QString::fromLocal8Bit(exception.what())));
    }
    serviceManager.tellStopped(exitCode);
    return ended(exitCode);
}
