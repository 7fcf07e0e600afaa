// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "ProcessMemory.h"

#include <QFile>
#include <QRegularExpression>

namespace support {

std::optional<qint64> residentKilobytes(qint64 processId)
{
    QFile file(QStringLiteral("/proc/%1/status").arg(processId));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    static const QRegularExpression line(QStringLiteral("VmRSS:\\s*(\\d+) kB"));
    const QRegularExpressionMatch match = line.match(QString::fromLatin1(file.readAll()));
    if (!match.hasMatch())
        return std::nullopt;
    return match.captured(1).toLongLong();
}

} // namespace support
