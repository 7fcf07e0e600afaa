// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CHECKS_ROWTEXTS_H
#define VIGIL_AGENT_CHECKS_ROWTEXTS_H

#include <string>
#include <vector>

#include "agent/core/ObjectId.h"

namespace agent {

/// The keys of a check, or the keys of a metric's check and its name, as readable text (see readableText()).
/// index is that of a row of VIGIL-MIB: each text is its length and its octets.
std::vector<std::string> textsOf(const ObjectId& index);

/// The index of the check, from the index of one of its metrics.
ObjectId checkOf(const ObjectId& metric);

/// All texts with slashes between them.
std::string nameOf(const std::vector<std::string>& texts);

} // namespace agent

#endif
