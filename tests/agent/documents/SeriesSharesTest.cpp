// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <map>

#include "agent/documents/SeriesShares.h"

using agent::SeriesShares;
using Holder = SeriesShares::Holder;

namespace {

/// Lets holders ask for series in a room of a fixed size.
class SeriesSharesTest : public testing::Test
{
protected:
    static constexpr size_t room = 12;

    static Holder holder(unsigned int user, agent::ApplicationId application)
    {
        return {std::to_string(user), application};
    }

    /// False if the holder has its share already.
    bool want(const Holder& holder)
    {
        if (m_holders.size() >= room) {
            const auto victim = m_shares.victimFor(holder);
            if (!victim)
                return false;
            m_shares.remove(*victim, m_holders.at(*victim));
            m_holders.erase(*victim);
        }
        const SeriesShares::Key key(holder.application, ++m_last);
        m_shares.add(key, holder);
        m_holders[key] = holder;
        return true;
    }

    void wantAll(const Holder& holder)
    {
        for (size_t i = 0; i < 2 * room && want(holder); ++i) {
        }
    }

    std::map<agent::ApplicationId, int> counts() const
    {
        std::map<agent::ApplicationId, int> counts;
        for (const auto& [key, holder] : m_holders)
            ++counts[holder.application];
        return counts;
    }

    SeriesShares m_shares;
    std::map<SeriesShares::Key, Holder> m_holders;
    unsigned int m_last = 0;
};

using Counts = std::map<agent::ApplicationId, int>;

} // namespace

TEST_F(SeriesSharesTest, OneAloneHasAll)
{
    wantAll(holder(1, 1));
    EXPECT_EQ(counts(), (Counts{{1, 12}}));
    EXPECT_FALSE(want(holder(1, 1)));
}

TEST_F(SeriesSharesTest, ApplicationsOfAUserShareEqually)
{
    wantAll(holder(1, 1));
    wantAll(holder(1, 2));
    EXPECT_EQ(counts(), (Counts{{1, 6}, {2, 6}}));
    wantAll(holder(1, 3));
    EXPECT_EQ(counts(), (Counts{{1, 4}, {2, 4}, {3, 4}}));
}

TEST_F(SeriesSharesTest, ManyApplicationsDoNotGiveAUserMore)
{
    for (agent::ApplicationId application = 1; application <= 3; ++application)
        wantAll(holder(1, application));
    wantAll(holder(2, 9));
    EXPECT_EQ(counts(), (Counts{{1, 2}, {2, 2}, {3, 2}, {9, 6}}));
}

TEST_F(SeriesSharesTest, AnUnusedShareIsForOthers)
{
    want(holder(2, 9));
    wantAll(holder(1, 1));
    EXPECT_EQ(counts(), (Counts{{1, 11}, {9, 1}}));
}

TEST_F(SeriesSharesTest, FairSharesStayAsTheyAre)
{
    wantAll(holder(1, 1));
    wantAll(holder(2, 2));
    const Counts fair = counts();
    for (int round = 0; round < 5; ++round) {
        EXPECT_FALSE(want(holder(1, 1)));
        EXPECT_FALSE(want(holder(2, 2)));
    }
    EXPECT_EQ(counts(), fair);
}

TEST_F(SeriesSharesTest, WithoutASeriesThereIsNoVictim)
{
    EXPECT_FALSE(m_shares.victimFor(holder(1, 1)));
}
