// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_AGENTREADER_H
#define VIGILCTL_AGENTREADER_H

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QObject>
#include <QUrl>

namespace vigilctl {

/// Reads the agent's document over HTTP.
///
/// Failure: finished() says what went wrong. An agent that does not answer within 10 seconds is gone.
class AgentReader : public QObject
{
    Q_OBJECT

public:
    /// url is that of the agent's page.
    explicit AgentReader(const QUrl& url);

    /// finished() follows.
    void read();

signals:
    /// problem is empty unless the document could not be read.
    void finished(const QByteArray& document, const QString& problem);

private:
    const QUrl m_url;
    QNetworkAccessManager m_manager;
};

} // namespace vigilctl

#endif
