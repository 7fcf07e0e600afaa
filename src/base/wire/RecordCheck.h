// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_RECORDCHECK_H
#define VIGIL_BASE_WIRE_RECORDCHECK_H

#include <QByteArray>
#include <QString>

#include <optional>

namespace base {

/// The first problem in the encoding of a record of this data type, or nothing.
///
/// PropertyReader forgives bytes that end early. The agent must not: a record cut short would create a cell
/// under a shortened identifier. So every property must be complete, every text must fill its property, and
/// no required property may be missing. Unknown properties are allowed.
///
/// Any thread. The bytes are not trusted.
[[nodiscard]] std::optional<QString> recordProblem(int dataType, const QByteArray& payload);

} // namespace base

#endif
