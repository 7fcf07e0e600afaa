// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_HTTP_HTTPSERVER_H
#define VIGIL_AGENT_HTTP_HTTPSERVER_H

#include <QHostAddress>
#include <QString>

#include <functional>
#include <memory>

#include "agent/core/Clock.h"
#include "agent/core/Error.h"
#include "agent/http/HttpReply.h"
#include "agent/http/HttpRequest.h"

namespace agent {

/// Serves HTTP in the agent's event loop: GET and HEAD, no request body.
///
/// Its peers are not trusted. A request must come within requestMs, and its reply be taken within the same
/// time. A long reply has this time for each progressBytes. Connections are limited, for each user and in
/// all. Each turn of the event loop makes a small part of the pending replies, so managers never wait for a
/// reader of a long one.
///
/// Ownership: the clock must outlive it.
/// Failure: listen() returns why it cannot serve. Later errors end only the connection they came from.
class HttpServer
{
public:
    static constexpr unsigned int maxConnections = 64;
    static constexpr size_t maxUserConnections = 24; ///< of a user other than root, or of another host
    static constexpr size_t connectionBytes = size_t{32} * 1024; ///< a longer header is refused
    static constexpr qint64 requestMs = 20'000;
    static constexpr qint64 progressBytes = qint64{1} << 20U;

    using Handler = std::function<HttpReply(const HttpRequest& request)>;

    HttpServer(Clock& clock, Handler handler);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    Error listen(const QHostAddress& host, quint16 port);

    /// The host and port it listens on; empty before.
    QString address() const;

private:
    class Daemon;

    Clock& m_clock;
    const Handler m_handler;
    std::unique_ptr<Daemon> m_daemon; // null until it listens
};

} // namespace agent

#endif
