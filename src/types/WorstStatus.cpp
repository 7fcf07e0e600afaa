// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "types/WorstStatus.h"

#include <algorithm>
#include <array>

using vigil::HealthStatus;

namespace {

int severity(HealthStatus status)
{
    static constexpr std::array<int, 4> ranks = {0, 2, 3, 1};
    const auto index = static_cast<std::size_t>(status);
    return index < ranks.size() ? ranks[index] : ranks.back();
}

bool isLessSevere(const ResultEntry& left, const ResultEntry& right)
{
    return severity(left.result.getStatus()) < severity(right.result.getStatus());
}

} // namespace

HealthStatus worstStatus(const std::vector<ResultEntry>& entries)
{
    const auto worst = std::max_element(entries.begin(), entries.end(), isLessSevere);
    return worst == entries.end() ? HealthStatus::Unknown : worst->result.getStatus();
}
