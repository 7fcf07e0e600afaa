// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_RESULT_H
#define VIGIL_RESULT_H

#include <string>

#include <vigil/vigil_export.h>

namespace vigil {

/// The state of a metric or a check. The manager reads these numbers; they equal the exit codes of monitoring
/// plugins. The order of severity is different: OK, UNKNOWN, WARNING, CRITICAL.
enum class HealthStatus : int { Ok = 0, Warning = 1, Critical = 2, Unknown = 3 };

/// The outcome of one evaluation: a name, a status and one line of text.
///
/// \code
/// vigil::HealthCheck* check = vigil::createHealthCheck("shop", "orders");
/// vigil::ScalarMetric* pending = check->createScalarMetric("pending");
/// check->update();
/// std::vector<vigil::Result> results;
/// check->getResults(results);
/// for (const vigil::Result& result : results)
///     std::cout << result.getStatusString(result.getStatus()) << ' ' << result.getSummary() << '\n';
/// pending->remove();
/// check->destroy();
/// \endcode
///
/// Purpose: the answer of HealthCheck::getResults() for each metric. All texts are UTF-8.
///
/// Threads: a plain value without locks. Several threads may read one object while none changes it.
class VIGIL_EXPORT Result
{
public:
    Result(const std::string& name = std::string(), HealthStatus status = HealthStatus::Unknown,
           std::string summary = std::string());
    Result(const Result& other);
    Result& operator=(const Result& other);
    virtual ~Result();

    /// The name of the evaluated metric.
    std::string getName() const;

    HealthStatus getStatus() const;

    /// One line for the operator.
    std::string getSummary() const;

    /// The word for any status, not only for this result's: "OK", "WARNING", "CRITICAL" or "UNKNOWN".
    std::string getStatusString(HealthStatus status) const;

private:
    std::string m_name;
    HealthStatus m_status;
    std::string m_summary;
};

} // namespace vigil

#endif
