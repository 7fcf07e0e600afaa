// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_PUBLISHEDCHECKS_H
#define VIGIL_SUPPORT_PUBLISHEDCHECKS_H

#include <string>
#include <vector>

#include "agent/cells/ServedCells.h"
#include "agent/checks/CheckList.h"
#include "support/ManualClock.h"

namespace support {

/// The agent's cells and list of checks, without applications: the test publishes.
class PublishedChecks
{
public:
    static constexpr qint64 staleMs = 60'000;

    static agent::ObjectId indexOf(const std::vector<std::string>& texts)
    {
        agent::ObjectId index;
        for (const std::string& text : texts) {
            index.push_back(static_cast<unsigned int>(text.size()));
            for (const char octet : text)
                index.push_back(static_cast<unsigned int>(static_cast<signed char>(octet))); // as the library
        }
        return index;
    }

    void publish(const std::vector<std::string>& keys, int status, const std::string& summary = "text")
    {
        const agent::ObjectId check = indexOf(keys);
        set(1, 3, check, status);
        set(1, 4, check, summary);
    }

    /// keys are those of the check and the name of the metric.
    void publishMetric(const std::vector<std::string>& keys, int status, const std::string& value,
                       const std::string& unit = "%", const std::string& warning = "~:80",
                       const std::string& critical = "@10:20")
    {
        const agent::ObjectId row = indexOf(keys);
        set(3, 1, row, status);
        set(3, 2, row, std::string("summary"));
        set(4, 2, row, value);
        set(4, 3, row, unit);
        set(4, 4, row, warning);
        set(4, 5, row, critical);
    }

    void remove(const std::vector<std::string>& keys)
    {
        for (const unsigned int table : {1U, 3U, 4U})
            for (const unsigned int column : {1U, 2U, 3U, 4U, 5U})
                cells.unset(1, cell(table, column, indexOf(keys)));
    }

    agent::ApplicationId application = 1; ///< that publishes
    ManualClock clock;
    agent::CellStore store;
    agent::ServedCells cells{store, clock, {{10'000, 60'000, 3, 1000}, staleMs}};
    agent::Mutes mutes{clock};
    agent::CheckList list{cells, mutes, clock};

private:
    static agent::ObjectId cell(unsigned int table, unsigned int column, const agent::ObjectId& row)
    {
        agent::ObjectId id = agent::below(agent::vigilMibRoot(), {table, 1, column});
        id.insert(id.end(), row.begin(), row.end());
        return id;
    }

    void set(unsigned int table, unsigned int column, const agent::ObjectId& row,
             const agent::CellValue& value)
    {
        cells.publish(application, cell(table, column, row), value);
    }
};

} // namespace support

#endif
