// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_CHECKTABLE_H
#define VIGIL_AGENT_SERVING_CHECKTABLE_H

#include "agent/checks/CheckList.h"
#include "agent/serving/ReadOnlyTable.h"

namespace agent {

/// Serves vigilAgentCheckTable: all health checks, with their names as text and a number as index.
///
/// Ownership: checks must outlive the table.
class CheckTable : public ReadOnlyTable
{
public:
    explicit CheckTable(const CheckList& checks);

protected:
    std::optional<ObjectId> nextRow(const ObjectId& after) const override;
    bool put(netsnmp_variable_list* varbind, unsigned int column, const ObjectId& row) const override;

private:
    const CheckList& m_checks;
};

} // namespace agent

#endif
