// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CHECKS_CHECK_H
#define VIGIL_AGENT_CHECKS_CHECK_H

#include <QDateTime>

#include <string>

#include "agent/cells/Cell.h"
#include "agent/checks/Severity.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// A health check as managers read it at this moment. All texts are valid UTF-8 (see readableText()).
struct Check
{
    unsigned int number = 0;       ///< stays as long as the agent remembers the check (see RowNumbers)
    ObjectId id;                   ///< the index of its row in vigilHealthCheckTable
    ApplicationId application = 0; ///< its owner, connected or lost

    std::string firstKey;
    std::string secondKey;
    std::string name; ///< "first/second"; two checks can have the same name, but not the same keys

    int status = status::unknown;
    std::string summary;

    QDateTime since;      ///< UTC; since when managers have read this status
    QDateTime lastUpdate; ///< UTC; null before the first update in this run of the agent
    qint64 ageMs = -1;    ///< since the last update; -1 before it
    quint64 updates = 0;  ///< since the check appeared

    QDateTime mutedUntil; ///< UTC; null unless an operator has muted the check
    qint64 mutedMs = 0;   ///< what is left of this time; 0 if the check is not muted

    int severity() const { return status::severityOf(status); }
};

/// The last result of one metric. All texts are valid UTF-8.
struct Metric
{
    unsigned int check = 0;  ///< the number of its check
    unsigned int number = 0; ///< unique in its check; stays as the number of a check does
    ObjectId id;             ///< the index of its row in vigilMetricResultTable

    std::string name;
    std::string fullName; ///< "first/second/metric"

    int status = status::unknown;
    std::string summary;

    std::string value; ///< a decimal number with a point; empty for a metric without a number
    std::string unit;  ///< without blanks around it

    // The ranges by which the value was judged; boundsOf() takes them apart.
    std::string warningRange;
    std::string criticalRange;

    int severity() const { return status::severityOf(status); }
};

} // namespace agent

#endif
