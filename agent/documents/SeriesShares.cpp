// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/documents/SeriesShares.h"

#include <algorithm>

namespace agent {

void SeriesShares::add(const Key& series, const Holder& holder)
{
    Share& share = m_users[holder.user];
    std::set<Key>& keys = share.applications[holder.application];
    const size_t before = keys.size();
    keys.insert(series);
    resize(share, holder.application, before, keys.size());
}

void SeriesShares::remove(const Key& series, const Holder& holder)
{
    const auto user = m_users.find(holder.user);
    Share& share = user->second;
    const auto keys = share.applications.find(holder.application);
    const size_t before = keys->second.size();
    keys->second.erase(series);
    resize(share, holder.application, before, keys->second.size());
    if (keys->second.empty())
        share.applications.erase(keys);
    if (share.applications.empty())
        m_users.erase(user);
}

void SeriesShares::resize(Share& share, ApplicationId application, size_t before, size_t after)
{
    share.size += after - before;
    share.bySize.erase({before, application});
    if (after > 0)
        share.bySize.insert({after, application});
}

/// A difference of one is fair: otherwise two would take the same series from each other for good.
std::optional<SeriesShares::Key> SeriesShares::victimFor(const Holder& holder) const
{
    const auto largest =
        std::max_element(m_users.begin(), m_users.end(), [](const auto& left, const auto& right) {
            return left.second.size < right.second.size;
        });
    if (largest == m_users.end())
        return std::nullopt;
    const auto own = m_users.find(holder.user);
    const size_t ofUser = own == m_users.end() ? 0 : own->second.size;
    const bool isOtherUser = largest->second.size > ofUser + 1;
    const Share& share = isOtherUser || own == m_users.end() ? largest->second : own->second;
    const auto& [size, application] = *share.bySize.rbegin();
    const auto mine = share.applications.find(holder.application);
    const size_t ofApplication = mine == share.applications.end() ? 0 : mine->second.size();
    if (!isOtherUser && (own == m_users.end() || size <= ofApplication + 1))
        return std::nullopt;
    return *share.applications.at(application).rbegin();
}

} // namespace agent
