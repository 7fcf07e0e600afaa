// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "types/Summary.h"

#include <vigil/HealthCheck.h>

#include <QString>
#include <QStringList>

using vigil::HealthStatus;

std::string Summary::summarizeOk(const vigil::HealthCheck& check, const std::vector<ResultEntry>&) const
{
    return check.getDescription();
}

std::string Summary::summarizeProblems(const vigil::HealthCheck& check,
                                       const std::vector<ResultEntry>& entries) const
{
    QStringList problems;
    for (const ResultEntry& entry : entries) {
        if (entry.result.getStatus() != HealthStatus::Ok)
            problems += QString::fromStdString(entry.result.getSummary());
    }
    const QString description = QString::fromStdString(check.getDescription());
    return (description + QLatin1String(" - ") + problems.join(QLatin1Char(' '))).toStdString();
}
