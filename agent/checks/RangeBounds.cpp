// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/checks/RangeBounds.h"

#include <QByteArray>

namespace agent {

namespace {

bool isNumber(const std::string& text)
{
    bool isOk = false;
    QByteArray::fromStdString(text).toDouble(&isOk);
    return isOk;
}

bool isBound(const std::string& text)
{
    return text.empty() || isNumber(text);
}

} // namespace

RangeBounds boundsOf(const std::string& range)
{
    RangeBounds bounds;
    bounds.isInverse = !range.empty() && range[0] == '@';
    const std::string text = range.substr(bounds.isInverse ? 1 : 0);
    const std::string::size_type colon = text.find(':');
    if (colon == std::string::npos) {
        bounds.lower = "0";
        bounds.upper = text;
        return isNumber(text) ? bounds : RangeBounds();
    }
    if (colon == 0)
        return {};
    bounds.lower = text.compare(0, colon, "~") == 0 ? std::string() : text.substr(0, colon);
    bounds.upper = text.substr(colon + 1);
    return isBound(bounds.lower) && isBound(bounds.upper) ? bounds : RangeBounds();
}

} // namespace agent
