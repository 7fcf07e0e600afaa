// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "vigilctl/ControlClient.h"

#include <QFileInfo>
#include <QJsonDocument>

namespace vigilctl {

ControlClient::ControlClient(const QString& path, const AnswerLimits& limits)
    : DocumentReader(limits), m_path(path)
{
    connect(&m_socket, &QLocalSocket::connected, this, [this] { m_socket.write(m_question); });
    connect(&m_socket, &QLocalSocket::readyRead, this, [this] { take(m_socket.readAll()); });
    connect(&m_socket, &QLocalSocket::errorOccurred, this, &ControlClient::handleError);
}

bool ControlClient::mayOpen(const QString& path)
{
    return QFileInfo(path).isWritable();
}

void ControlClient::ask(const QJsonObject& question)
{
    begin();
    m_question = QJsonDocument(question).toJson(QJsonDocument::Compact) + '\n';
    m_socket.connectToServer(m_path);
}

void ControlClient::read()
{
    ask({{QStringLiteral("command"), QStringLiteral("checks")}});
}

/// The agent closes the connection after its reply.
void ControlClient::handleError(QLocalSocket::LocalSocketError error)
{
    if (error != QLocalSocket::PeerClosedError)
        return finish(m_socket.errorString());
    take(m_socket.readAll());
    finish(isAnswerEmpty() ? QStringLiteral("it closed the connection without an answer; only root and the "
                                            "agent's own user may ask")
                           : QString());
}

void ControlClient::disconnectFromAgent()
{
    m_socket.abort();
}

} // namespace vigilctl
