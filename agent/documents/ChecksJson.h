// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_DOCUMENTS_CHECKSJSON_H
#define VIGIL_AGENT_DOCUMENTS_CHECKSJSON_H

#include <set>

#include "agent/applications/ApplicationServer.h"
#include "agent/cells/CellStore.h"
#include "agent/checks/CheckList.h"
#include "agent/core/Clock.h"
#include "agent/core/TextPieces.h"

namespace agent {

/// All checks, metrics and applications of the host as JSON; docs/checks.schema.json describes it.
///
/// Each check is as managers read it at the moment of its piece. One that appears meanwhile may be missing.
///
/// Ownership: everything it is given must outlive it.
class ChecksJson : public TextPieces
{
public:
    struct Sources
    {
        const CheckList& checks;
        const CellStore& store;
        const ApplicationServer& applications;
        const Clock& clock;
    };

    explicit ChecksJson(const Sources& sources) : m_sources(sources) {}

    bool appendTo(QByteArray& text) override;

private:
    enum class Part { Start, Checks, Metrics, Applications, End };

    QByteArray start() const;
    QByteArray nextCheck();
    QByteArray nextMetric();
    QByteArray nextApplication();
    bool isStale(const Check& check) const;

    const Sources m_sources;
    Part m_part = Part::Start;
    unsigned int m_check = 0;         // the last one written
    unsigned int m_metric = 0;        // the last one written of this check
    ApplicationId m_application = 0;  // the last one written
    std::set<ApplicationId> m_silent; // the owners of stale checks
};

/// The worst status and the number of checks with each status.
QByteArray summaryJson(const CheckList& checks);

} // namespace agent

#endif
