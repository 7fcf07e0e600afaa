// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_AGENTREADER_H
#define VIGILCTL_AGENTREADER_H

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QUrl>

#include "vigilctl/DocumentReader.h"

namespace vigilctl {

/// Reads the agent's document over HTTP.
class AgentReader : public DocumentReader
{
    Q_OBJECT

public:
    /// url is the address of the agent's page.
    explicit AgentReader(const QUrl& url, const AnswerLimits& limits = {});

    void read() override;
    QString address() const override { return m_page.toString(); }

private:
    void handleEnd();
    void disconnectFromAgent() override;

    const QUrl m_page;
    const QUrl m_url;
    QNetworkAccessManager m_manager;
    QPointer<QNetworkReply> m_reply;
};

} // namespace vigilctl

#endif
