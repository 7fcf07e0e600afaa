// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/http/HttpPages.h"

#include <QFile>

#include "agent/documents/HistoryJson.h"

namespace agent {

namespace {

const QByteArray jsonType = QByteArrayLiteral("application/json");
const QByteArray historyPath = QByteArrayLiteral("/api/history/");

struct File
{
    const char* path;
    const char* resource;
    const char* contentType;
};

constexpr File files[] = {
    {"/", ":/page/index.html", "text/html; charset=utf-8"},
    {"/page.css", ":/page/page.css", "text/css; charset=utf-8"},
    {"/page.js", ":/page/page.js", "text/javascript; charset=utf-8"},
};

HttpReply replyWith(const File& file)
{
    QFile resource(QLatin1String(file.resource));
    resource.open(QIODevice::ReadOnly); // it is part of the program
    HttpReply reply;
    reply.contentType = file.contentType;
    reply.text = resource.readAll();
    return reply;
}

HttpReply replyWith(const QByteArray& contentType, std::unique_ptr<TextPieces> pieces)
{
    HttpReply reply;
    reply.contentType = contentType;
    reply.pieces = std::move(pieces);
    return reply;
}

HttpReply notFound()
{
    HttpReply reply;
    reply.status = 404;
    reply.text = "There is no such page. See / /api/checks /health /metrics\n";
    return reply;
}

} // namespace

HttpReply HttpPages::replyTo(const HttpRequest& request) const
{
    for (const File& file : files) {
        if (request.path == file.path)
            return replyWith(file);
    }
    if (request.path == "/api/checks")
        return replyWith(jsonType, std::make_unique<ChecksJson>(m_sources));
    if (request.path == "/health")
        return health();
    if (request.path == "/metrics")
        return metrics(request.accept);
    if (request.path.startsWith(historyPath))
        return history(request.path.mid(historyPath.size()));
    return notFound();
}

HttpReply HttpPages::health() const
{
    const CheckList& checks = m_sources.checks;
    HttpReply reply;
    reply.status = checks.worstStatus() == status::critical ? 503 : 200;
    reply.contentType = jsonType;
    const QByteArray members = summaryJson(checks);
    reply.text = '{' + members.left(members.size() - 1) + "}\n";
    return reply;
}

HttpReply HttpPages::metrics(const QByteArray& accept) const
{
    const OpenMetrics::Format format = OpenMetrics::formatFor(accept);
    return replyWith(format == OpenMetrics::Format::OpenMetrics ? OpenMetrics::contentType
                                                                : OpenMetrics::oldContentType,
                     std::make_unique<OpenMetrics>(m_sources.checks, m_figures(), format));
}

HttpReply HttpPages::history(const QByteArray& number) const
{
    bool isNumber = false;
    const unsigned int check = number.toUInt(&isNumber);
    if (!isNumber || !m_sources.checks.find(check))
        return notFound();
    return replyWith(jsonType, std::make_unique<HistoryJson>(m_sources.checks, m_history, check));
}

} // namespace agent
