// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_MATCHESPATTERN_H
#define VIGIL_SUPPORT_MATCHESPATTERN_H

#include <gmock/gmock.h>

#include <regex>
#include <string>

namespace support {

/// Like testing::MatchesRegex, with the same patterns on every platform.
MATCHER_P(MatchesPattern, pattern, "matches " + std::string(pattern))
{
    return std::regex_match(std::string(arg), std::regex(pattern));
}

} // namespace support

#endif
