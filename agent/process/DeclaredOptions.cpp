// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/DeclaredOptions.h"

namespace agent {

QList<QCommandLineOption> DeclaredOptions::all() const
{
    return {agentx,
            standalone,
            subtree,
            config,
            checkConfig,
            installService,
            uninstallService,
            service,
            show,
            community,
            listen,
            http,
            control,
            allowUsers,
            setTimeout.option,
            grace.option,
            forget.option,
            staleAfter,
            maxConnections.option,
            maxCells.option,
            maxUserCells.option,
            maxMemory.option,
            maxText.option,
            maxFrame.option,
            stateDirectory,
            verbose};
}

/// The description also names the limits and the default.
DeclaredOptions::Number DeclaredOptions::numberOption(const QString& name, const QString& unit,
                                                      const QString& description, int least, int most,
                                                      int& value)
{
    return {QCommandLineOption(
                name,
                description + QStringLiteral(" From %1 to %2. Default: %3.").arg(least).arg(most).arg(value),
                unit),
            least, most, value};
}

} // namespace agent
