// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_METRICTABLE_H
#define VIGIL_AGENT_SERVING_METRICTABLE_H

#include "agent/checks/CheckList.h"
#include "agent/serving/ReadOnlyTable.h"

namespace agent {

/// Serves vigilAgentMetricTable: the results of all metrics, with numbers for programs that read only
/// integers.
///
/// Ownership: checks must outlive the table.
class MetricTable : public ReadOnlyTable
{
public:
    explicit MetricTable(const CheckList& checks);

protected:
    std::optional<ObjectId> nextRow(const ObjectId& after) const override;
    bool put(netsnmp_variable_list* varbind, unsigned int column, const ObjectId& row) const override;

private:
    const CheckList& m_checks;
};

} // namespace agent

#endif
