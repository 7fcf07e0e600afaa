// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "health/RangeHistory.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

using vigil::Range;

TEST(RangeHistory, TakesNoMoreMemoryForEverNewRanges)
{
    RangeHistory history;
    std::set<const Range*> objects;
    for (int upper = 1; upper <= 5000; ++upper) {
        history.set(Range::CreateRange(0, upper));
        EXPECT_EQ(history.current().getUpperBound(), upper);
        EXPECT_EQ(history.currentText(), std::to_string(upper));
        objects.insert(&history.current());
    }
    EXPECT_LE(objects.size(), RangeHistory::maxRanges);
}

TEST(RangeHistory, ARangeStaysWholeWhileManyOthersFollow)
{
    RangeHistory history;
    for (int upper = 1; upper <= 3000; ++upper) {
        const Range& before = history.current();
        const std::string text = before.toString();
        history.set(Range::CreateRange(0, upper));
        EXPECT_EQ(before.toString(), text);
    }
    const Range& old = history.current();
    for (int upper = 4001; upper < 4900; ++upper)
        history.set(Range::CreateRange(0, upper));
    EXPECT_EQ(old.toString(), "3000");
}

TEST(RangeHistory, ARangeInForceForLongIsNotTheNextToBeOverwritten)
{
    RangeHistory history;
    const Range constant = Range::CreateInverseRange(1, 2);
    history.set(constant);
    for (int upper = 1; upper <= 3000; ++upper) {
        history.set(Range::CreateRange(0, upper));
        history.set(constant);
        const Range& current = history.current();
        history.set(Range::CreateRange(upper, 5000));
        EXPECT_EQ(current.toString(), "@1:2") << upper;
    }
}
