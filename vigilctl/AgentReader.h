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
/// Failure: finished() gives the reason. No answer within 10 seconds counts as one.
class AgentReader : public DocumentReader
{
    Q_OBJECT

public:
    /// url is the address of the agent's page.
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
