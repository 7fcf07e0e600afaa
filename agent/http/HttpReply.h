// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_HTTP_HTTPREPLY_H
#define VIGIL_AGENT_HTTP_HTTPREPLY_H

#include <QByteArray>

#include <memory>

#include "agent/core/TextPieces.h"

namespace agent {

/// The answer to one request: a short text, or a long one in pieces.
struct HttpReply
{
    int status = 200;
    QByteArray contentType = QByteArrayLiteral("text/plain; charset=utf-8");
    QByteArray text;
    std::unique_ptr<TextPieces> pieces; ///< in place of text, unless null
};

} // namespace agent

#endif
