// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_DECODE_H
#define VIGIL_BASE_WIRE_DECODE_H

#include <QByteArray>
#include <QString>

#include <initializer_list>

#include "base/wire/PropertyReader.h"

namespace base {

/// Runs read on a reader of bytes, and turns a missing property into the message that the log shows.
/// propertyNames are those of the record, in the order of their tags.
template <typename ReadProperties>
void decodeRecord(const QByteArray& bytes, const char* recordName,
                  std::initializer_list<const char*> propertyNames, ReadProperties read)
{
    try {
        PropertyReader reader(bytes, recordName);
        read(reader);
    } catch (int missingTag) {
        const bool isKnown = missingTag >= 0 && missingTag < static_cast<int>(propertyNames.size());
        const char* name = isKnown ? propertyNames.begin()[missingTag] : "";
        throw QStringLiteral("Received incomplete structure %1: Missing property '%2'")
            .arg(QLatin1String(recordName), QLatin1String(name));
    }
}

} // namespace base

#endif
