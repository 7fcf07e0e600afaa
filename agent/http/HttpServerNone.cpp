// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/http/HttpServer.h"

namespace agent {

// Built in place of HttpServer.cpp where libmicrohttpd is missing.

class HttpServer::Daemon
{
};

HttpServer::HttpServer(Clock& clock, Handler handler) : m_clock(clock), m_handler(std::move(handler)) {}

HttpServer::~HttpServer() = default;

Error HttpServer::listen(const QHostAddress&, quint16)
{
    return Error(QStringLiteral("this agent was built without libmicrohttpd"));
}

QString HttpServer::address() const
{
    return {};
}

} // namespace agent
