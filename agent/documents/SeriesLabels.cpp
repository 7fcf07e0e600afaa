// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/documents/SeriesLabels.h"

#include <algorithm>
#include <string>

#include "agent/checks/ReadableText.h"

namespace agent {

namespace {

constexpr const char* names[] = {"first", "second", "metric"};
constexpr unsigned int endOfAscii = 0x80;
constexpr unsigned int endOfOctets = 0x100;

/// An octet above 127 can be in an index as itself or as a negative number; the library writes the latter.
bool isReadable(const std::vector<unsigned int>& octets, const std::string& text)
{
    const bool isOfLibrary = std::none_of(octets.begin(), octets.end(), [](unsigned int octet) {
        return octet >= endOfAscii && octet < endOfOctets;
    });
    return isOfLibrary && text.find('\\') == std::string::npos && readableText(text, text.size()) == text;
}

QByteArray escaped(const std::vector<unsigned int>& octets)
{
    QByteArray text;
    for (const unsigned int octet : octets) {
        if (octet >= ' ' && octet < endOfAscii && octet != '\\')
            text += static_cast<char>(octet);
        else
            text += "\\x" + QByteArray::number(octet, 16);
    }
    return text;
}

QByteArray keyText(const std::vector<unsigned int>& octets)
{
    std::string text;
    for (const unsigned int octet : octets)
        text += static_cast<char>(octet);
    return isReadable(octets, text) ? QByteArray::fromStdString(text) : escaped(octets);
}

} // namespace

QByteArray seriesLabels(const ObjectId& row)
{
    QByteArray labels;
    size_t position = 0;
    for (const char* name : names) {
        if (position >= row.size())
            break;
        const size_t start = position + 1;
        const size_t end = start + std::min<size_t>(row[position], row.size() - start);
        const auto begin = row.begin();
        const std::vector<unsigned int> octets(begin + static_cast<std::ptrdiff_t>(start),
                                               begin + static_cast<std::ptrdiff_t>(end));
        labels += (labels.isEmpty() ? "" : ",") + QByteArray(name) + '=' + labelValue(keyText(octets));
        position = end;
    }
    return labels;
}

QByteArray labelValue(const QByteArray& text)
{
    QByteArray value = text;
    value.replace('\\', "\\\\").replace('"', "\\\"").replace('\n', "\\n");
    return '"' + value + '"';
}

} // namespace agent
