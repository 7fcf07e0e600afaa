// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTING_IDENTIFIER_H
#define VIGIL_TESTING_IDENTIFIER_H

#include <string>
#include <utility>
#include <vector>

/// The identifiers of VIGIL-MIB, as dotted texts.
namespace vigil::test {

// Tables and columns.
constexpr unsigned int checkTable = 1;
constexpr unsigned int metricTable = 2;
constexpr unsigned int resultTable = 3;
constexpr unsigned int valueTable = 4;
constexpr unsigned int functionTable = 5;
constexpr unsigned int warningColumn = 3;  ///< of the metrics
constexpr unsigned int criticalColumn = 4; ///< of the metrics

/// Below the enterprise's identifier: what the library sends in place of it in settle(). After a reconnect it
/// sends values in the order of the identifiers, so this one is the last of all.
constexpr const char* markTree = "4294967295";

std::string fullIdentifier(const std::string& relative);

/// Unchanged if it is not below the enterprise's.
std::string relativeIdentifier(const std::string& full);

/// The place of a cell within its table: the row's texts.
struct CellPlace
{
    unsigned int table = 0; ///< 0 if the cell is in none of the tables
    unsigned int column = 0;
    std::vector<std::string> row;
};

/// column is the number of the table, and that of the column.
std::string cellIdentifier(std::pair<unsigned int, unsigned int> column, const std::vector<std::string>& row);
CellPlace placeOf(const std::string& identifier);

} // namespace vigil::test

#endif
