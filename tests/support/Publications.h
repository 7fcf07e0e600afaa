// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_PUBLICATIONS_H
#define VIGIL_SUPPORT_PUBLICATIONS_H

#include <QByteArray>

#include <string>
#include <vector>

#include "support/FakeService.h"

/// Frames as readable lines:
///
///     127.3.1 = 5            127.3.1 = "text"            127.3.1 unset
///     127.3.1 = 5 (trap)     answer 1 to 127.3.1 = "text"
///
/// All functions are pure. Identifiers are relative to the enterprise's, as on the wire.
namespace support {

std::string set(const std::string& oid, int value);
std::string set(const std::string& oid, const std::string& value);
std::string unset(const std::string& oid);
std::string withTrap(const std::string& publication);

/// The cell of a row with an index of texts. It does not use the code under test.
std::string cell(int table, int column, const std::vector<std::string>& index);

/// The line for a frame from the library.
std::string describe(const FakeService::Frame& frame);

QByteArray encodedInt(const std::string& oid, int value, int storeType = 0);
QByteArray encodedString(const std::string& oid, const std::string& value, int storeType = 0);

} // namespace support

#endif
