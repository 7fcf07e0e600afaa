// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_HTTP_SERIESSHARES_H
#define VIGIL_AGENT_HTTP_SERIESSHARES_H

#include <map>
#include <optional>
#include <set>
#include <utility>

#include "agent/checks/CheckList.h"
#include "agent/core/User.h"

namespace agent {

/// Who has how many series of the history, and who gives one up when there is no room.
///
/// The users share the room equally, and so do the applications of a user. What one does not need is for the
/// others.
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

    /// The series to remove, so that this holder can have one more. Nothing if it has its share already.
    std::optional<Key> victimFor(const Holder& holder) const;

private:
    struct Share
    {
        size_t size = 0;
        std::map<ApplicationId, std::set<Key>> applications;
        std::set<std::pair<size_t, ApplicationId>> bySize; // so that the largest is found at once
    };

    void resize(Share& share, ApplicationId application, size_t before, size_t after);

    std::map<User, Share> m_users;
};

} // namespace agent

#endif
