// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_CONTROLCLIENT_H
#define VIGILCTL_CONTROLCLIENT_H

#include <QByteArray>
#include <QJsonObject>
#include <QLocalSocket>

#include "vigilctl/DocumentReader.h"

namespace vigilctl {

/// Asks the agent through its local socket, for root and the agent's own user.
class ControlClient : public DocumentReader
{
    Q_OBJECT

public:
    explicit ControlClient(const QString& path, const AnswerLimits& limits = {});

    /// True if this user may open the agent's socket.
    static bool mayOpen(const QString& path);

    /// finished() follows with the reply. One question at a time.
    void ask(const QJsonObject& question);

    void read() override;
    QString address() const override { return m_path; }

private:
    void handleError(QLocalSocket::LocalSocketError error);
    void disconnectFromAgent() override;

    const QString m_path;
    QLocalSocket m_socket;
    QByteArray m_question;
};

} // namespace vigilctl

#endif
