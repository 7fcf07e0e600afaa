// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_LIBRARYLOG_H
#define VIGIL_SUPPORT_LIBRARYLOG_H

#include <string>
#include <vector>

namespace support {

/// The library's log files, in a directory that belongs to the test program.
///
/// The library chooses its directory once in the life of a process, so the directory is the same for all
/// tests of a program; each object begins with an empty one. Make it before the library is started.
class LibraryLog
{
public:
    LibraryLog();
    LibraryLog(const LibraryLog&) = delete;
    LibraryLog& operator=(const LibraryLog&) = delete;

    /// The lines written so far, without their time stamps.
    std::vector<std::string> lines() const;

    /// How many lines contain text.
    int count(const std::string& text) const;
    bool contains(const std::string& text) const { return count(text) > 0; }

    /// Waits for a line that contains text.
    bool waitFor(const std::string& text, int timeoutMs = 10000) const;
};

} // namespace support

#endif
