// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_CONTROLCLIENT_H
#define VIGILCTL_CONTROLCLIENT_H

#include <QByteArray>
#include <QJsonObject>
#include <QLocalSocket>
#include <QTimer>

#include "vigilctl/DocumentReader.h"

namespace vigilctl {

/// Asks the agent through its local socket, for root and the agent's own user.
///
/// Failure: finished() gives the reason. A silence of 10 seconds counts as one.
class ControlClient : public DocumentReader
{
    Q_OBJECT

public:
    explicit ControlClient(const QString& path);

    /// True if this user may open the agent's socket.
    static bool mayOpen(const QString& path);

    /// finished() follows with the reply. One question at a time.
    void ask(const QJsonObject& question);

    void read() override;
    QString address() const override { return m_path; }

private:
    void handleError(QLocalSocket::LocalSocketError error);
    void finish(const QString& problem);

    const QString m_path;
    QLocalSocket m_socket;
    QTimer m_deadline;
    QByteArray m_question;
    QByteArray m_answer;
    bool m_isBusy = false;
};

} // namespace vigilctl

#endif
