// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/ConfigurationFile.h"

#include <QDir>
#include <QFile>

#include <array>

#include <windows.h>

#include "agent/core/FileRights.h"

namespace agent::configurationFile {

Error checkRights(const QString& path)
{
    QString stranger;
    if (Error error = fileRights::findStranger(path, stranger))
        return error;
    if (stranger.isEmpty())
        return {};
    return Error(
        QStringLiteral("the configuration file %1 holds secrets, but \"%2\" has rights to it. Leave it to "
                       "administrators, the system and the agent's user: icacls \"%1\" /inheritance:r "
                       "/grant:r *S-1-5-32-544:F *S-1-5-18:F *%3:R")
            .arg(QDir::toNativeSeparators(path), stranger, fileRights::ownSid()));
}

QByteArray nameForC(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    if (QFile::decodeName(name) == path)
        return name;
    std::array<wchar_t, 32'768> brief = {}; // the name that MS-DOS programs see
    const QString native = QDir::toNativeSeparators(path);
    const DWORD size = GetShortPathNameW(reinterpret_cast<const wchar_t*>(native.utf16()), brief.data(),
                                         static_cast<DWORD>(brief.size()));
    const QString found = QString::fromWCharArray(brief.data(), static_cast<int>(size));
    const QByteArray foundName = QFile::encodeName(found);
    return QFile::decodeName(foundName) == found ? foundName : QByteArray();
}

} // namespace agent::configurationFile
