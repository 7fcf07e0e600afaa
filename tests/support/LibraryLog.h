// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_LIBRARYLOG_H
#define VIGIL_SUPPORT_LIBRARYLOG_H

#include <string>
#include <vector>

#include "support/Deadline.h"

namespace support {

/// The library's log files, in a directory of the test program.
///
/// The library chooses its directory once in a process, so all tests of a program share one. Each object
/// starts with an empty directory. Create it before the library starts.
class LibraryLog
{
public:
    LibraryLog();
    LibraryLog(const LibraryLog&) = delete;
    LibraryLog& operator=(const LibraryLog&) = delete;

    /// The lines written so far, without their time stamps.
    std::vector<std::string> lines() const;

    /// The number of lines with text.
    int count(const std::string& text) const;
    bool contains(const std::string& text) const { return count(text) > 0; }

    /// Waits for a line with text.
    bool waitFor(const std::string& text, int timeoutMs = deadlineMs) const;
};

} // namespace support

#endif
