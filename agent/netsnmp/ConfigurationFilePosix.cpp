// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/ConfigurationFile.h"

#include <QFile>

namespace agent::configurationFile {

Error checkRights(const QString&)
{
    return {};
}

QByteArray nameForC(const QString& path)
{
    return QFile::encodeName(path);
}

} // namespace agent::configurationFile
