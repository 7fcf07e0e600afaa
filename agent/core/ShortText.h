// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_SHORTTEXT_H
#define VIGIL_AGENT_CORE_SHORTTEXT_H

#include <string>

namespace agent {

/// The first bytes of a longer text, cut between characters of UTF-8.
std::string shortened(std::string text, size_t maxBytes);

} // namespace agent

#endif
