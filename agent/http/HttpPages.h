// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_HTTP_HTTPPAGES_H
#define VIGIL_AGENT_HTTP_HTTPPAGES_H

#include <functional>
#include <vector>

#include "agent/documents/ChecksJson.h"
#include "agent/documents/History.h"
#include "agent/documents/OpenMetrics.h"
#include "agent/http/HttpReply.h"
#include "agent/http/HttpRequest.h"

namespace agent {

/// The pages of the agent's HTTP server:
///
///     /                    the page, with /page.css and /page.js
///     /api/checks          ChecksJson
///     /api/history/NUMBER  HistoryJson of one check
///     /health              the worst status; 503 if it is CRITICAL
///     /metrics             OpenMetrics
///
/// Ownership: everything it is given must outlive it.
class HttpPages
{
public:
    using Figures = std::function<std::vector<AgentFigure>()>;

    HttpPages(const ChecksJson::Sources& sources, const History& history, Figures figures)
        : m_sources(sources), m_history(history), m_figures(std::move(figures))
    {}

    HttpReply replyTo(const HttpRequest& request) const;

private:
    HttpReply health() const;
    HttpReply metrics(const QByteArray& accept) const;
    HttpReply history(const QByteArray& number) const;

    const ChecksJson::Sources m_sources;
    const History& m_history;
    const Figures m_figures;
};

} // namespace agent

#endif
