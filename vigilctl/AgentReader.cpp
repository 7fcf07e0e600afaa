// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "vigilctl/AgentReader.h"

#include <QNetworkProxy>
#include <QNetworkReply>

namespace vigilctl {

namespace {

constexpr int timeoutMs = 10'000;

} // namespace

AgentReader::AgentReader(const QUrl& url)
    : m_page(url), m_url(url.resolved(QUrl(QStringLiteral("/api/checks"))))
{
    m_manager.setProxy(QNetworkProxy::NoProxy);
}

void AgentReader::read()
{
    QNetworkRequest request(m_url);
    request.setTransferTimeout(timeoutMs);
    QNetworkReply* reply = m_manager.get(request);
    connect(reply, &QNetworkReply::finished, this, [this, reply] {
        reply->deleteLater();
        const bool isRead = reply->error() == QNetworkReply::NoError;
        emit finished(isRead ? reply->readAll() : QByteArray(), isRead ? QString() : reply->errorString());
    });
}

} // namespace vigilctl
