// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_RESULT_H
#define VIGIL_RESULT_H

#include <string>

#include <vigil/vigil_export.h>

namespace vigil {

/// The state of a metric or a check. The numbers are those that the manager reads and that monitoring plugins
/// exit with. The order of severity is another one: OK, UNKNOWN, WARNING, CRITICAL.
enum class HealthStatus : int { Ok = 0, Warning = 1, Critical = 2, Unknown = 3 };

/// The outcome of one evaluation: a name, a status and one line of text.
///
/// Purpose: what HealthCheck::getResults() returns for each metric.
/// Threads: a plain value without locks; see Oid.
/// Ownership: owns its texts, copies freely. All texts are UTF-8.
/// Failure: nothing fails.
class VIGIL_EXPORT Result
{
public:
    Result(const std::string& name = std::string(), HealthStatus status = HealthStatus::Unknown,
           std::string summary = std::string());
    Result(const Result& other);
    Result& operator=(const Result& other);
    virtual ~Result();

    /// The name of the metric that was evaluated.
    std::string getName() const;

    HealthStatus getStatus() const;

    /// One line for a human reader.
    std::string getSummary() const;

    /// The word for any status, whatever this result holds: "OK", "WARNING", "CRITICAL" or "UNKNOWN".
    std::string getStatusString(HealthStatus status) const;

private:
    std::string m_name;
    HealthStatus m_status;
    std::string m_summary;
};

} // namespace vigil

#endif
