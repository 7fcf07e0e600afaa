// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTING_PUBLISHEDTABLE_H
#define VIGIL_TESTING_PUBLISHEDTABLE_H

#include <iosfwd>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <vigil/Result.h>

namespace vigil {

/// Test support for applications, see FakeService. A namespace vigil::testing would be ambiguous with
/// GoogleTest's after `using namespace vigil`.
namespace test {

/// One published value.
struct PublishedCell
{
    bool isText = false;
    int number = 0;        ///< 0 if it is a text
    std::string text;      ///< UTF-8; empty if it is a number
    int notifications = 0; ///< how many of the values published here asked for one
};

/// A metric, as managers see it. All texts are UTF-8.
struct PublishedMetric
{
    std::string name;
    HealthStatus status = HealthStatus::Unknown; ///< of the last update
    std::string summary;                         ///< of the last update; empty before the first one
    std::string value;                           ///< six significant digits; empty without a number
    std::string unit;
    std::string warningRange;   ///< as Range::toString() writes it
    std::string criticalRange;  ///< the same
    bool acceptsRanges = false; ///< managers may set the ranges
};

/// A health check, as managers see it. All texts are UTF-8.
struct PublishedCheck
{
    std::string firstKey;
    std::string secondKey;
    HealthStatus status = HealthStatus::Unknown;
    std::string summary;
    bool hasFunctions = false;            ///< managers may trigger functions
    std::vector<PublishedMetric> metrics; ///< by name

    /// Null if there is none of this name. Belongs to the check.
    const PublishedMetric* metric(const std::string& name) const;
};

/// The content of a service at one moment: its health checks, and every single cell.
///
/// Ownership: a copy. Pointers belong to the table they come from, so keep the table as long as them.
class PublishedTable
{
public:
    using Cells = std::map<std::string, PublishedCell>;

    PublishedTable() = default;

    /// From cells by their full identifiers, such as "1.3.6.1.4.1.32473.1.2.0".
    PublishedTable(Cells cells, int connections);

    /// By their keys.
    const std::vector<PublishedCheck>& checks() const& { return m_checks; }
    std::vector<PublishedCheck> checks() && { return std::move(m_checks); }

    /// Null if there is none.
    const PublishedCheck* check(const std::string& firstKey, const std::string& secondKey) const;

    /// By their full identifiers, in the order of texts.
    const Cells& cells() const& { return m_cells; }
    Cells cells() && { return std::move(m_cells); }

    /// Null if there is none. identifier is a full one.
    const PublishedCell* cell(const std::string& identifier) const;

    /// How many applications were connected. 0 explains an empty table.
    int connections() const { return m_connections; }

private:
    Cells m_cells;
    std::vector<PublishedCheck> m_checks;
    int m_connections = 0;
};

/// "OK", "WARNING", "CRITICAL" or "UNKNOWN".
const char* nameOf(HealthStatus status);

/// One line.
std::ostream& operator<<(std::ostream& out, const PublishedCell& cell);
std::ostream& operator<<(std::ostream& out, const PublishedMetric& metric);
std::ostream& operator<<(std::ostream& out, const PublishedCheck& check);

/// A text table with a line for each check, metric and further cell.
std::ostream& operator<<(std::ostream& out, const PublishedTable& table);

} // namespace test
} // namespace vigil

#endif
