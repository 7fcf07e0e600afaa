// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/checks/ReadableText.h"

#include <QString>

#include "agent/core/ShortText.h"

namespace agent {

namespace {

bool isPlain(const std::string& bytes)
{
    for (const char byte : bytes) {
        if (byte < ' ' || byte > '~') // also every byte above 127, where char is signed or not
            return false;
    }
    return true;
}

} // namespace

std::string readableText(const std::string& bytes, std::size_t maxBytes)
{
    constexpr size_t longestCharacter = 4;
    if (bytes.size() > maxBytes + longestCharacter) // the rest would only take time
        return readableText(bytes.substr(0, maxBytes + longestCharacter), maxBytes);
    if (isPlain(bytes))
        return bytes.substr(0, maxBytes);
    QString text = QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
    for (QChar& character : text) {
        if (character.category() == QChar::Other_Control)
            character = QChar::ReplacementCharacter;
    }
    return shortened(text.toStdString(), maxBytes);
}

} // namespace agent
