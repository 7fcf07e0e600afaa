// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Every allocation of an overflow fails once.

#include "client/QueueOverflow.h"

#include <gmock/gmock.h>

#include <QVariant>

#include <cstddef>
#include <new>
#include <string>
#include <vector>

#include "support/FaultyMemory.h"
#include "support/PublicationText.h"

using faults::OutOfMemory;
using support::publicationOf;
using support::textsOf;
using testing::ElementsAreArray;

namespace {

/// Repeats action once if it runs out of memory, and returns whether it did.
template <typename Action>
bool runsOutOfMemory(int succeedingFirst, Action action)
{
    try {
        const OutOfMemory fault(succeedingFirst, OutOfMemory::Extent::OneAllocation);
        action();
    } catch (const std::bad_alloc&) {
        action();
        return true;
    }
    return false;
}

/// Adds a text at every point where memory may run out.
void addTextTo(std::size_t bytesForAll, const std::vector<std::string>& expected)
{
    bool hasFailed = true;
    for (int succeeding = 0; hasFailed; ++succeeding) {
        SCOPED_TRACE("after " + std::to_string(succeeding) + " allocations");
        QueueOverflow overflow(bytesForAll);
        overflow.add(publicationOf("1.1", 1, true));
        overflow.add(publicationOf("1.1", 2));
        const Publication text = publicationOf("1.2", QStringLiteral("text"));
        hasFailed = runsOutOfMemory(succeeding, [&] { overflow.add(text); });
        overflow.add(publicationOf("1.3", 3));
        EXPECT_THAT(textsOf(overflow), ElementsAreArray(expected));
    }
}

} // namespace

TEST(QueueOverflowOutOfMemory, KeepsAPublicationOnceAndWhole)
{
    constexpr std::size_t plenty = 10'000;
    addTextTo(plenty, {"1.1=1 notify", "1.1=2", "1.2=text", "1.3=3"});
}

TEST(QueueOverflowOutOfMemory, KeepsTheLatestPublications)
{
    constexpr std::size_t none = 0;
    addTextTo(none, {"1.1=2 notify", "1.2=text", "1.3=3"});
}
