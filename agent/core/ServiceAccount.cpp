// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/ServiceAccount.h"

#include <QCryptographicHash>
#include <QtEndian>

namespace agent::serviceAccount {

QString service()
{
    return QStringLiteral("vigil-agent");
}

QString name()
{
    return QStringLiteral("NT SERVICE\\") + service();
}

QString sid(const QString& service)
{
    constexpr int partBytes = 4;
    const QString upper = service.toUpper();
    const QByteArray text(reinterpret_cast<const char*>(upper.utf16()),
                          upper.size() * static_cast<int>(sizeof(ushort)));
    const QByteArray hash = QCryptographicHash::hash(text, QCryptographicHash::Sha1);
    QString sid = QStringLiteral("S-1-5-80");
    for (int at = 0; at < hash.size(); at += partBytes)
        sid += QLatin1Char('-') + QString::number(qFromLittleEndian<quint32>(hash.constData() + at));
    return sid;
}

} // namespace agent::serviceAccount
