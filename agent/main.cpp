// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <QCoreApplication>

#include <cstdio>

#include "agent/Agent.h"
#include "agent/core/Log.h"
#include "agent/process/Options.h"
#include "agent/process/ServiceManager.h"
#include "agent/process/Signals.h"

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vigil-agent"));

    agent::Options options;
    QString text;
    switch (agent::Options::parse(QCoreApplication::arguments(), options, text)) {
    case agent::Options::Action::PrintText:
        std::fputs(text.toLocal8Bit().constData(), stdout);
        return 0;
    case agent::Options::Action::Fail:
        agent::log::error(text);
        return 2;
    case agent::Options::Action::Run:
        break;
    }
    agent::log::setVerbose(options.isVerbose);

    agent::Signals signalWatch;
    QObject::connect(&signalWatch, &agent::Signals::endRequested, &application, &QCoreApplication::quit);
    agent::ServiceManager serviceManager;
    agent::Agent agent(options);
    const QString problem = agent.start();
    if (!problem.isEmpty()) {
        agent::log::error(problem);
        return 1;
    }
    QObject::connect(&signalWatch, &agent::Signals::reloadRequested, &application, [&] { agent.reload(); });
    agent.setStatusListener([&](const QString& status) { serviceManager.tellStatus(status); });
    serviceManager.tellReady();
    const int exitCode = QCoreApplication::exec();
    serviceManager.tellStopping();
    agent::log::info(QStringLiteral("ending"));
    return exitCode;
}
