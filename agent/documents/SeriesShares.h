// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_DOCUMENTS_SERIESSHARES_H
#define VIGIL_AGENT_DOCUMENTS_SERIESSHARES_H

#include <map>
#include <optional>
#include <set>
#include <utility>

#include "agent/checks/CheckList.h"
#include "agent/core/User.h"

namespace agent {

/// Counts the series of each user and application, and chooses the one to drop when there is no room.
///
/// The users share the room equally, and so do the applications of a user. Room left by one goes to others.
class SeriesShares
{
public:
    using Key = CheckList::MetricKey;

    struct Holder
    {
        User user;
        ApplicationId application = 0;
    };

    void add(const Key& series, const Holder& holder);

    /// The series must have been added for this holder.
    void remove(const Key& series, const Holder& holder);

    /// The series to remove to make room for one of this holder. Nothing if it has its share already.
    std::optional<Key> victimFor(const Holder& holder) const;

private:
    struct Share
    {
        size_t size = 0;
        std::map<ApplicationId, std::set<Key>> applications;
        std::set<std::pair<size_t, ApplicationId>> bySize; // the largest comes last
    };

    void resize(Share& share, ApplicationId application, size_t before, size_t after);

    std::map<User, Share> m_users;
};

} // namespace agent

#endif
