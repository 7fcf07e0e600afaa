// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/checks/RowTexts.h"

#include <algorithm>

#include "agent/checks/ReadableText.h"

namespace agent {

namespace {

/// The end of the text at position.
size_t endOfText(const ObjectId& index, size_t position)
{
    const size_t left = index.size() - position;
    return left == 0 ? position : position + std::min<size_t>(left, 1 + size_t(index[position]));
}

} // namespace

std::vector<std::string> textsOf(const ObjectId& index)
{
    std::vector<std::string> texts;
    for (size_t position = 0; position < index.size();) {
        const size_t end = endOfText(index, position);
        std::string text;
        while (++position < end)
            text += static_cast<char>(index[position] & 0xffU); // above 127 the arc is a negative number
        texts.push_back(readableText(text, maxAdminString));
    }
    return texts;
}

ObjectId checkOf(const ObjectId& metric)
{
    const size_t end = endOfText(metric, endOfText(metric, 0));
    return ObjectId(metric.begin(), metric.begin() + static_cast<std::ptrdiff_t>(end));
}

std::string nameOf(const std::vector<std::string>& texts)
{
    std::string name;
    for (size_t i = 0; i < texts.size(); ++i)
        name += (i > 0 ? "/" : "") + texts[i];
    return readableText(name, maxAdminString);
}

} // namespace agent
