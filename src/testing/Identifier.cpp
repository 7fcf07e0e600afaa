// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "testing/Identifier.h"

#include <cstdint>
#include <sstream>

namespace vigil::test {

namespace {

const std::string enterprise = "1.3.6.1.4.1.32473.";
const std::string tables = enterprise + "127.3.1.200.4.";

using Arcs = std::vector<std::uint32_t>;

Arcs arcsOf(const std::string& dotted)
{
    Arcs arcs;
    std::istringstream stream(dotted);
    std::string arc;
    while (std::getline(stream, arc, '.'))
        arcs.push_back(static_cast<std::uint32_t>(std::strtoul(arc.c_str(), nullptr, 10)));
    return arcs;
}

/// Texts with their lengths before them. Empty if the arcs are none.
std::vector<std::string> textsOf(const Arcs& arcs, std::size_t position)
{
    std::vector<std::string> texts;
    while (position < arcs.size()) {
        const std::size_t size = arcs[position++];
        if (size > arcs.size() - position)
            return {};
        std::string text;
        for (; text.size() < size; ++position)
            text += static_cast<char>(arcs[position] & 0xFF); // bytes above 127 have their sign extended
        texts.push_back(text);
    }
    return texts;
}

} // namespace

std::string fullIdentifier(const std::string& relative)
{
    return enterprise + relative;
}

std::string relativeIdentifier(const std::string& full)
{
    return full.rfind(enterprise, 0) == 0 ? full.substr(enterprise.size()) : full;
}

std::string cellIdentifier(std::pair<unsigned int, unsigned int> column, const std::vector<std::string>& row)
{
    std::string identifier = tables + std::to_string(column.first) + ".1." + std::to_string(column.second);
    for (const std::string& text : row) {
        identifier += '.' + std::to_string(text.size());
        for (const char byte : text)
            identifier += '.' + std::to_string(static_cast<std::uint32_t>(static_cast<signed char>(byte)));
    }
    return identifier;
}

CellPlace placeOf(const std::string& identifier)
{
    CellPlace place;
    if (identifier.rfind(tables, 0) != 0)
        return place;
    const Arcs arcs = arcsOf(identifier.substr(tables.size()));
    if (arcs.size() < 4 || arcs[1] != 1)
        return place;
    place.row = textsOf(arcs, 3);
    const std::size_t texts = arcs[0] == checkTable || arcs[0] == functionTable ? 2 : 3;
    if (arcs[0] < checkTable || arcs[0] > functionTable || place.row.size() != texts)
        return place;
    place.table = arcs[0];
    place.column = arcs[2];
    return place;
}

} // namespace vigil::test
