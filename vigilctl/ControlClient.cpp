// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "vigilctl/ControlClient.h"

#include <QFileInfo>
#include <QJsonDocument>

#include <utility>

namespace vigilctl {

namespace {

constexpr int silenceMs = 10'000;

} // namespace

ControlClient::ControlClient(const QString& path) : m_path(path)
{
    m_deadline.setSingleShot(true);
    m_deadline.setInterval(silenceMs);
    connect(&m_deadline, &QTimer::timeout, this, [this] { finish(QStringLiteral("it does not answer")); });
    connect(&m_socket, &QLocalSocket::connected, this, [this] { m_socket.write(m_question); });
    connect(&m_socket, &QLocalSocket::readyRead, this, [this] {
        m_answer += m_socket.readAll();
        m_deadline.start();
    });
    connect(&m_socket, &QLocalSocket::errorOccurred, this, &ControlClient::handleError);
}

bool ControlClient::mayOpen(const QString& path)
{
    return QFileInfo(path).isWritable();
}

void ControlClient::ask(const QJsonObject& question)
{
    m_isBusy = true;
    m_answer.clear();
    m_question = QJsonDocument(question).toJson(QJsonDocument::Compact) + '\n';
    m_deadline.start();
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
    m_answer += m_socket.readAll();
    finish(m_answer.isEmpty() ? QStringLiteral("it closed the connection without an answer; only root and "
                                               "the agent's own user may ask")
                              : QString());
}

void ControlClient::finish(const QString& problem)
{
    if (!std::exchange(m_isBusy, false))
        return;
    m_deadline.stop();
    m_socket.abort();
    const QByteArray answer = problem.isEmpty() ? m_answer : QByteArray();
    // Not from the socket's own signal: the slot may ask again.
    QTimer::singleShot(0, this, [this, answer, problem] { emit finished(answer, problem); });
}

} // namespace vigilctl
