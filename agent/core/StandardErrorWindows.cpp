// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/StandardError.h"

#include <cstdlib>

#include <io.h>
#include <windows.h>

#include "agent/core/BackgroundWriter.h"

namespace agent::standardError {

namespace {

constexpr int standardErrorNumber = 2;

HANDLE standardErrorHandle()
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(standardErrorNumber));
}

/// A console gets Unicode; its code page may lack letters. Everything else gets UTF-8. False if the system
/// reports an error.
bool writeTo(HANDLE output, const QByteArray& line)
{
    DWORD mode = 0;
    DWORD written = 0;
    if (GetConsoleMode(output, &mode)) {
        const QString text = QString::fromUtf8(line);
        return WriteConsoleW(output, text.utf16(), static_cast<DWORD>(text.size()), &written, nullptr) != 0;
    }
    return WriteFile(output, line.constData(), static_cast<DWORD>(line.size()), &written, nullptr) != 0;
}

/// A console waits for as long as text in it is selected.
BackgroundWriter& writer()
{
    static auto* const writer = [] {
        auto* made = new BackgroundWriter; // never destroyed: its thread may be writing
        std::atexit([] { standardError::waitUntilWritten(); });
        return made;
    }();
    return *writer;
}

} // namespace

bool write(const QByteArray& line)
{
    if (GetFileType(standardErrorHandle()) != FILE_TYPE_DISK)
        return writer().add(line.size(), [line] { writeTo(standardErrorHandle(), line); });
    return writeTo(standardErrorHandle(), line);
}

void waitUntilWritten()
{
    writer().waitUntilWritten();
}

bool isJournal()
{
    return false;
}

} // namespace agent::standardError

namespace agent {

Error standardOutput::print(const QString& text)
{
    if (standardError::writeTo(GetStdHandle(STD_OUTPUT_HANDLE), text.toUtf8()))
        return {};
    return Error(QStringLiteral("cannot write to standard output: %1").arg(qt_error_string()));
}

} // namespace agent
