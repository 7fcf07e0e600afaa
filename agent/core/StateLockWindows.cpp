// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/StateLock.h"

#include <QDir>

#include <windows.h>

namespace agent {

StateLock::~StateLock()
{
    if (m_file != none)
        CloseHandle(reinterpret_cast<HANDLE>(m_file));
}

/// Other programs, such as a virus scanner, may open the file meanwhile.
StateLock::Outcome StateLock::tryToTake(const QString& path, QString& reason)
{
    constexpr DWORD shared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const QString native = QDir::toNativeSeparators(path);
    const HANDLE file =
        CreateFileW(reinterpret_cast<const wchar_t*>(native.utf16()), GENERIC_READ | GENERIC_WRITE, shared,
                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    OVERLAPPED start = {};
    if (file != INVALID_HANDLE_VALUE &&
        LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &start)) {
        m_file = reinterpret_cast<std::intptr_t>(file);
        return Outcome::Taken;
    }
    const DWORD error = GetLastError();
    if (file != INVALID_HANDLE_VALUE)
        CloseHandle(file);
    reason = qt_error_string(static_cast<int>(error));
    return error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING ? Outcome::Held : Outcome::Impossible;
}

} // namespace agent
