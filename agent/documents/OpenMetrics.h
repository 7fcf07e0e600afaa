// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_DOCUMENTS_OPENMETRICS_H
#define VIGIL_AGENT_DOCUMENTS_OPENMETRICS_H

#include <QByteArray>

#include <vector>

#include "agent/checks/CheckList.h"
#include "agent/core/TextPieces.h"

namespace agent {

/// One number about the agent itself.
struct AgentFigure
{
    const char* name; ///< without "vigil_agent_" and "_total"
    const char* help;
    bool isCounter;
    double value;
};

/// All checks and metrics for Prometheus: as OpenMetrics, or in the older text format.
///
/// No label depends on a value, so a series lives as long as its check. A family lists all checks before the
/// next one begins; a check that appears or goes meanwhile is in some families only.
///
/// Ownership: checks must outlive it.
class OpenMetrics : public TextPieces
{
public:
    enum class Format { OpenMetrics, PrometheusText };

    static constexpr const char* contentType = "application/openmetrics-text; version=1.0.0; charset=utf-8";
    static constexpr const char* oldContentType = "text/plain; version=0.0.4; charset=utf-8";

    /// What the reader with this Accept header understands.
    static Format formatFor(const QByteArray& accept);

    OpenMetrics(const CheckList& checks, std::vector<AgentFigure> figures, Format format)
        : m_checks(checks), m_figures(std::move(figures)), m_format(format)
    {}

    bool appendTo(QByteArray& text) override;

private:
    QByteArray header(const QByteArray& name, const char* type, const char* unit, const char* help) const;
    bool appendCheck(QByteArray& text);
    bool appendMetric(QByteArray& text);
    QByteArray agentFamilies() const;

    const CheckList& m_checks;
    const std::vector<AgentFigure> m_figures;
    const Format m_format;
    size_t m_family = 0;
    bool m_isStarted = false; // the family has its header
    CheckList::MetricKey m_last = {0, 0};
};

} // namespace agent

#endif
