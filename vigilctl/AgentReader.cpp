// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "vigilctl/AgentReader.h"

#include <QNetworkProxy>

namespace vigilctl {

AgentReader::AgentReader(const QUrl& url, const AnswerLimits& limits)
    : DocumentReader(limits), m_page(url), m_url(url.resolved(QUrl(QStringLiteral("/api/checks"))))
{
    m_manager.setProxy(QNetworkProxy::NoProxy);
}

void AgentReader::read()
{
    begin();
    QNetworkRequest request(m_url);
    request.setRawHeader("Accept-Encoding", "identity"); // a few compressed bytes can have any length
    m_reply = m_manager.get(request);
    connect(m_reply, &QNetworkReply::readyRead, this, [this] { take(m_reply->readAll()); });
    connect(m_reply, &QNetworkReply::finished, this, &AgentReader::handleEnd);
}

void AgentReader::handleEnd()
{
    take(m_reply->readAll());
    const bool isRead = m_reply->error() == QNetworkReply::NoError;
    finish(isRead ? QString() : m_reply->errorString());
}

void AgentReader::disconnectFromAgent()
{
    m_reply->disconnect(this);
    m_reply->abort();
    m_reply->deleteLater();
}

} // namespace vigilctl
