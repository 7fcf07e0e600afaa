// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <QCoreApplication>

#include <cstdlib>

#include "agent/Agent.h"
#include "agent/core/Log.h"
#include "agent/core/StandardError.h"
#include "agent/netsnmp/HostLookup.h"
#include "agent/process/CommandLine.h"
#include "agent/process/ServiceManager.h"
#include "agent/process/Signals.h"

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

int checkConfig(const agent::Options& options)
{
    agent::SystemClock clock;
    agent::SnmpEngine engine({QStringLiteral("none"), options.configFile, {}, options.subtree}, clock);
    if (const agent::Error error = engine.check()) {
        agent::log::error(error.text());
        return 1;
    }
    agent::standardOutput::print(QStringLiteral("%1: correct\n").arg(options.configFile));
    return 0;
}

int serve(const agent::Options& options)
{
    agent::Signals signalWatch;
    QObject::connect(&signalWatch, &agent::Signals::endRequested, qApp, &QCoreApplication::quit);
    agent::SystemClock clock;
    agent::ServiceManager serviceManager(clock);
    agent::Agent agent(options);
    if (const agent::Error error = agent.start()) {
        agent::log::error(error.text());
        return 1;
    }
    QObject::connect(&signalWatch, &agent::Signals::reloadRequested, qApp, [&] { agent.reload(); });
    agent.setStatusListener([&](const QString& status) { serviceManager.tellStatus(status); });
    serviceManager.tellReady();
    const int exitCode = QCoreApplication::exec();
    agent.saveState();
    serviceManager.tellStopping();
    agent::log::info(QStringLiteral("ending"));
    return exitCode;
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
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vigil-agent"));

    agent::Options options;
    options.agentxAddress = agent::SnmpEngine::defaultAgentxAddress();
    options.canJoinMaster = !options.agentxAddress.isEmpty();
    options.stateDirectory = directoryIn("STATE_DIRECTORY");
    options.controlPath = controlPath();
    QString output;
    if (const agent::Error error = agent::readCommandLine(QCoreApplication::arguments(), options, output)) {
        agent::log::error(error.text());
        return 2;
    }
    if (!output.isEmpty()) {
        agent::standardOutput::print(output);
        return 0;
    }
    agent::log::setVerbose(options.isVerbose);
    if (options.isConfigCheck)
        return ended(checkConfig(options));
    if (const agent::Error error = agent::takePassedSocket(options.passedSocket)) {
        agent::log::error(error.text());
        return 1;
    }

    return ended(serve(options));
}
