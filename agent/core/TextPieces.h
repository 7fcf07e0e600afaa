// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_TEXTPIECES_H
#define VIGIL_AGENT_CORE_TEXTPIECES_H

#include <QByteArray>

namespace agent {

/// A text made in pieces while its reader takes it. Making a large one at once would delay managers.
class TextPieces
{
public:
    virtual ~TextPieces() = default;

    /// The bytes of the largest piece: a metric with the longest texts.
    static constexpr int maxPiece = 64 * 1024;

    /// Appends the next piece. False once there is none left.
    virtual bool appendTo(QByteArray& text) = 0;
};

} // namespace agent

#endif
