// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_AGENTREADER_H
#define VIGILCTL_AGENTREADER_H

#include <QNetworkAccessManager>
#include <QUrl>

#include "vigilctl/DocumentReader.h"

namespace vigilctl {

/// Reads the agent's document over HTTP.
///
/// Failure: finished() says what went wrong. An agent that does not answer within 10 seconds is gone.
class AgentReader : public DocumentReader
{
    Q_OBJECT

public:
    /// url is that of the agent's page.
    explicit AgentReader(const QUrl& url);

    void read() override;
    QString address() const override { return m_page.toString(); }

private:
    const QUrl m_page;
    const QUrl m_url;
    QNetworkAccessManager m_manager;
};

} // namespace vigilctl

#endif
