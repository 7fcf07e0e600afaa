// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CHECKS_READABLETEXT_H
#define VIGIL_AGENT_CHECKS_READABLETEXT_H

#include <cstddef>
#include <string>

namespace agent {

/// The longest SnmpAdminString.
constexpr std::size_t maxAdminString = 255;

/// An application's bytes as text for people: valid UTF-8 without control characters. U+FFFD replaces
/// all other bytes. A longer text is cut between characters.
std::string readableText(const std::string& bytes, std::size_t maxBytes);

} // namespace agent

#endif
