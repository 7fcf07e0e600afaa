// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_HTTP_HTTPREQUEST_H
#define VIGIL_AGENT_HTTP_HTTPREQUEST_H

#include <QByteArray>

namespace agent {

/// A GET or HEAD, as far as the reply depends on it.
struct HttpRequest
{
    QByteArray path;   ///< decoded, without the query
    QByteArray accept; ///< the Accept header
};

} // namespace agent

#endif
