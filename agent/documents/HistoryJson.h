// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_DOCUMENTS_HISTORYJSON_H
#define VIGIL_AGENT_DOCUMENTS_HISTORYJSON_H

#include "agent/checks/CheckList.h"
#include "agent/core/TextPieces.h"
#include "agent/documents/History.h"

namespace agent {

/// The last hour of one check's metrics as JSON: for each metric a list of values, the last one at the end.
///
/// Ownership: checks and history must outlive it.
class HistoryJson : public TextPieces
{
public:
    HistoryJson(const CheckList& checks, const History& history, unsigned int check)
        : m_checks(checks), m_history(history), m_check(check)
    {}

    bool appendTo(QByteArray& text) override;

private:
    const CheckList& m_checks;
    const History& m_history;
    const unsigned int m_check;
    bool m_isStarted = false;
    unsigned int m_metric = 0; // the last one looked at
    const char* m_separator = "";
};

} // namespace agent

#endif
