// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/ServiceFolders.h"

#include <windows.h>

#include <shlobj.h>

namespace agent::serviceFolders {

namespace {

QString programData()
{
    PWSTR path = nullptr;
    QString text;
    if (SHGetKnownFolderPath(FOLDERID_ProgramData, 0, nullptr, &path) == S_OK)
        text = QString::fromWCharArray(path);
    CoTaskMemFree(path);
    return text;
}

} // namespace

QString root()
{
    return programData() + QStringLiteral("\\Vigil");
}

QString configFile()
{
    return root() + QStringLiteral("\\vigil-agent.conf");
}

QString state()
{
    return root() + QStringLiteral("\\state");
}

QString log()
{
    return root() + QStringLiteral("\\log");
}

} // namespace agent::serviceFolders
