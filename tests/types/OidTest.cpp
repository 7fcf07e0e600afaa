// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <vigil/Oid.h>

#include <algorithm>
#include <list>
#include <map>
#include <utility>
#include <vector>

#include "support/Oids.h"
#include "types/OidOperators.h"

using support::oid;
using vigil::Oid;

namespace {

std::string reprinted(const std::string& text)
{
    return Oid::fromStdString(text).toStdString();
}

} // namespace

// The size is part of the binary interface.
static_assert(sizeof(Oid) == sizeof(void*), "an Oid is one pointer wide");

TEST(Oid, ADefaultOidIsInvalidAndPrintsAsTheEmptyText)
{
    const Oid empty;
    EXPECT_FALSE(empty.isValid());
    EXPECT_EQ(empty.size(), 0);
    EXPECT_EQ(empty.toStdString(), "");
    EXPECT_TRUE(empty.toStdVector().empty());
}

TEST(Oid, OneArcMakesItValidEvenIfTheArcIsZero)
{
    EXPECT_TRUE(oid("0").isValid());
    EXPECT_EQ(oid("0").size(), 1);
}

TEST(Oid, IsBuiltFromAListInItsOrder)
{
    const std::list<unsigned int> arcs = {3, 1, 2};
    EXPECT_EQ(Oid(arcs).toStdString(), "3.1.2");
    EXPECT_EQ(arcs.size(), 3u);
}

TEST(Oid, IsBuiltFromAnArrayInItsOrder)
{
    unsigned int ids[] = {1, 3, 6, 4294967295u};
    EXPECT_EQ(Oid::fromAsnOid(4, ids).toStdString(), "1.3.6.4294967295");
    EXPECT_EQ(Oid::fromAsnOid(2, ids).toStdString(), "1.3");
}

TEST(Oid, AnArrayOfNoArcsGivesTheEmptyOidAndIsNotRead)
{
    EXPECT_FALSE(Oid::fromAsnOid(0, nullptr).isValid());
}

TEST(Oid, IsBuiltFromAVectorAndGivesTheSameVectorBack)
{
    const std::vector<unsigned int> arcs = {0, 4294967295u, 7};
    EXPECT_EQ(Oid::fromStdVector(arcs).toStdVector(), arcs);
    EXPECT_FALSE(Oid::fromStdVector({}).isValid());
}

TEST(Oid, AnyFirstTwoArcsAreAccepted)
{
    EXPECT_EQ(reprinted("9.4294967295.0"), "9.4294967295.0");
}

TEST(Oid, CopiesOwnTheirArcs)
{
    Oid source = oid("1.3");
    const Oid constructed(source);
    Oid assigned;
    assigned = source;

    source.append(6);
    EXPECT_EQ(constructed.toStdString(), "1.3");
    EXPECT_EQ(assigned.toStdString(), "1.3");

    assigned.append(7);
    EXPECT_EQ(source.toStdString(), "1.3.6");
}

TEST(Oid, AssignmentReplacesTheArcsAndReturnsTheTarget)
{
    Oid target = oid("9.9.9");
    EXPECT_EQ(&(target = oid("1.3")), &target);
    EXPECT_EQ(target.toStdString(), "1.3");
}

TEST(Oid, AssignmentToItselfChangesNothing)
{
    Oid self = oid("1.3.6");
    Oid& alias = self;
    self = alias;
    EXPECT_EQ(self.toStdString(), "1.3.6");
}

TEST(Oid, MovingCopiesAndKeepsTheSource)
{
    Oid source = oid("1.3.6");
    const Oid target(std::move(source));
    EXPECT_EQ(target.toStdString(), "1.3.6");
    EXPECT_EQ(source.toStdString(), "1.3.6"); // NOLINT(bugprone-use-after-move): tested here
}

TEST(Oid, PrintsDecimalArcsWithDotsBetweenThem)
{
    EXPECT_EQ(Oid({1, 3, 6, 1, 4, 1}).toStdString(), "1.3.6.1.4.1");
    EXPECT_EQ(Oid({0, 10, 4294967295u}).toStdString(), "0.10.4294967295");
    EXPECT_EQ(Oid({7}).toStdString(), "7");
}

TEST(Oid, ALeadingDotMakesNoDifference)
{
    const Oid dotted = oid(".1.3.6.1.4.1.32473");
    EXPECT_TRUE(dotted == oid("1.3.6.1.4.1.32473"));
    EXPECT_EQ(dotted.toStdString(), "1.3.6.1.4.1.32473");
}

TEST(Oid, EmptyPiecesOfTheTextAreSkipped)
{
    EXPECT_EQ(reprinted("1..3"), "1.3");
    EXPECT_EQ(reprinted("1.3."), "1.3");
    EXPECT_EQ(reprinted("...1...3..."), "1.3");
}

TEST(Oid, PiecesOtherThanArcsAreSkipped)
{
    EXPECT_EQ(reprinted("1.3.abc.6"), "1.3.6");
    EXPECT_EQ(reprinted("1.x.3"), "1.3");
    EXPECT_EQ(reprinted("1.-2.3"), "1.3");
    EXPECT_EQ(reprinted("1.2.5e1.3"), "1.2.3");
    EXPECT_EQ(reprinted("1.0x10.3"), "1.3");
    EXPECT_EQ(reprinted("1,3.6"), "6");
}

TEST(Oid, AnArcIsAnUnsigned32BitNumber)
{
    EXPECT_FALSE(oid("4294967296").isValid());
    EXPECT_EQ(oid("4294967295").toStdVector(), std::vector<unsigned int>{4294967295u});
    EXPECT_EQ(reprinted("1.4294967296.3"), "1.3");
    EXPECT_EQ(reprinted("1.99999999999999999999999.3"), "1.3");
}

TEST(Oid, PiecesAreReadInBaseTen)
{
    EXPECT_EQ(reprinted("010.08"), "10.8");
}

TEST(Oid, BlanksAndAPlusSignAroundAnArcAreAccepted)
{
    EXPECT_EQ(reprinted(" 1 . 3\t.+6"), "1.3.6");
    EXPECT_EQ(reprinted("1 3.6"), "6");
}

TEST(Oid, NonAsciiDigitsAndNulBytesAreNotArcs)
{
    EXPECT_EQ(reprinted("1.\xD9\xA1.3"), "1.3");
    EXPECT_EQ(reprinted(std::string("1.2\0.3", 6)), "1.3");
}

TEST(Oid, TextWithoutAnyArcGivesTheInvalidOid)
{
    EXPECT_FALSE(oid("").isValid());
    EXPECT_FALSE(oid(".").isValid());
    EXPECT_FALSE(oid("abc").isValid());
    EXPECT_FALSE(oid("a.b.c").isValid());
}

TEST(Oid, AnyOidCanBePrintedAndParsedBack)
{
    const Oid original({0, 1, 4294967295u, 42});
    EXPECT_TRUE(Oid::fromStdString(original.toStdString()) == original);
}

TEST(Oid, AppendAddsOneArcAtTheEndAndReturnsTheTarget)
{
    Oid target = oid("1.3");
    EXPECT_EQ(&target.append(6), &target);
    EXPECT_EQ(target.toStdString(), "1.3.6");
    target.append(1).append(4);
    EXPECT_EQ(target.toStdString(), "1.3.6.1.4");
}

TEST(Oid, TheStreamOperatorChangesItsTargetAndReturnsIt)
{
    Oid a = oid("1.3");
    EXPECT_EQ(&(a << 5), &a);
    EXPECT_EQ(a.toStdString(), "1.3.5");
    a << 6 << 7;
    EXPECT_EQ(a.toStdString(), "1.3.5.6.7");
}

TEST(Oid, AppendAddsAllArcsOfAnotherAndReturnsTheTarget)
{
    Oid target = oid("1.3");
    const Oid other = oid("6.1");
    EXPECT_EQ(&target.append(other), &target);
    EXPECT_EQ(target.toStdString(), "1.3.6.1");
    EXPECT_EQ(other.toStdString(), "6.1");
    target.append(Oid());
    EXPECT_EQ(target.toStdString(), "1.3.6.1");
}

TEST(Oid, AppendingAnOidToItselfDoublesIt)
{
    Oid self = oid("1.3");
    self.append(self);
    EXPECT_EQ(self.toStdString(), "1.3.1.3");
}

TEST(Oid, PlusLeavesBothOperandsUnchanged)
{
    const Oid a = oid("1.3");
    const Oid b = oid("6.1");
    EXPECT_EQ((a + b).toStdString(), "1.3.6.1");
    EXPECT_EQ((a + a).toStdString(), "1.3.1.3");
    EXPECT_EQ((a + 6u).toStdString(), "1.3.6");
    EXPECT_EQ(a.toStdString(), "1.3");
    EXPECT_EQ(b.toStdString(), "6.1");
}

TEST(Oid, AtGivesTheArcAtAnIndexCountedFromZero)
{
    const Oid three = oid("7.8.9");
    EXPECT_EQ(three.at(0), 7u);
    EXPECT_EQ(three.at(1), 8u);
    EXPECT_EQ(three.at(2), 9u);
}

TEST(Oid, AtGivesZeroOutsideTheArcs)
{
    const Oid three = oid("7.8.9");
    EXPECT_EQ(three.at(3), 0u);
    EXPECT_EQ(three.at(-1), 0u);
    EXPECT_EQ(three.at(2147483647), 0u);
    EXPECT_EQ(Oid().at(0), 0u);
}

TEST(Oid, AParentSortsBeforeItsChildren)
{
    EXPECT_EQ(oid("1.3").compare(oid("1.3.6")), -1);
    EXPECT_EQ(oid("1.3.6").compare(oid("1.3")), 1);
    EXPECT_EQ(Oid().compare(oid("0")), -1);
    EXPECT_EQ(oid("0").compare(Oid()), 1);
}

TEST(Oid, TheFirstDifferentArcDecidesTheOrder)
{
    EXPECT_EQ(oid("1.4").compare(oid("1.3.6")), 1);
    EXPECT_EQ(oid("1.3.6").compare(oid("1.4")), -1);
    EXPECT_EQ(oid("2.1").compare(oid("1.2")), 1);
}

TEST(Oid, EqualOidsCompareAsZero)
{
    EXPECT_EQ(oid("1.3.6").compare(oid("1.3.6")), 0);
    EXPECT_EQ(Oid().compare(Oid()), 0);
    const Oid self = oid("1.3");
    EXPECT_EQ(self.compare(self), 0);
}

TEST(Oid, ArcsCompareUnsigned)
{
    EXPECT_EQ(oid("4294967295").compare(oid("1")), 1);
    EXPECT_EQ(oid("1").compare(oid("4294967295")), -1);
    EXPECT_EQ(oid("2147483648").compare(oid("2147483647")), 1);
}

TEST(Oid, TheOperatorsFollowCompare)
{
    EXPECT_TRUE(oid("1.3") == oid("1.3"));
    EXPECT_FALSE(oid("1.3") == oid("1.3.6"));
    EXPECT_TRUE(oid("1.3") != oid("1.4"));
    EXPECT_FALSE(oid("1.3") != oid("1.3"));
    EXPECT_TRUE(oid("1.3") < oid("1.3.6"));
    EXPECT_FALSE(oid("1.3") < oid("1.3"));
    EXPECT_FALSE(oid("1.4") < oid("1.3.6"));
}

TEST(Oid, AMapOfOidsIsInTheOrderOfAWalk)
{
    std::map<Oid, int> cells;
    for (const char* text : {"1.10", "1.9", "1", "1.9.1", "2"})
        cells[oid(text)] = 0;
    std::string walk;
    for (const auto& cell : cells)
        walk += cell.first.toStdString() + ' ';
    EXPECT_EQ(walk, "1 1.9 1.9.1 1.10 2 ");
}

TEST(Oid, ContainsItselfAndItsDescendants)
{
    const Oid a = oid("1.3.6");
    EXPECT_TRUE(a.containsChild(a));
    EXPECT_TRUE(a.containsChild(oid("1.3.6.1")));
    EXPECT_TRUE(a.containsChild(oid("1.3.6.1.4.1")));
}

TEST(Oid, TheEmptyOidContainsEveryOid)
{
    EXPECT_TRUE(Oid().containsChild(oid("1.3")));
    EXPECT_TRUE(Oid().containsChild(Oid()));
}

TEST(Oid, DoesNotContainItsParentNorASibling)
{
    EXPECT_FALSE(oid("1.3.6").containsChild(oid("1.3")));
    EXPECT_FALSE(oid("1.3.6").containsChild(Oid()));
    EXPECT_FALSE(oid("1.3.6").containsChild(oid("1.3.7.1")));
    EXPECT_FALSE(oid("1.3.6").containsChild(oid("2.3.6")));
}

TEST(Oid, RemovePrefixRemovesAMatchingPrefix)
{
    Oid x = oid("1.3.6.1.4");
    EXPECT_EQ(&x.removePrefix(oid("1.3.6")), &x);
    EXPECT_EQ(x.toStdString(), "1.4");
}

TEST(Oid, RemovePrefixOfTheWholeOidLeavesItEmpty)
{
    Oid x = oid("1.3");
    x.removePrefix(oid("1.3"));
    EXPECT_FALSE(x.isValid());
    Oid y = oid("1.3");
    y.removePrefix(y);
    EXPECT_FALSE(y.isValid());
}

TEST(Oid, RemovePrefixDoesNothingWhenThePrefixIsLonger)
{
    Oid x = oid("1.3");
    x.removePrefix(oid("1.3.6"));
    EXPECT_EQ(x.toStdString(), "1.3");
}

TEST(Oid, RemovePrefixDoesNothingWhenAnyArcDiffers)
{
    for (const char* prefix : {"2.3.6", "1.4.6", "1.3.7"}) {
        Oid x = oid("1.3.6.1");
        x.removePrefix(oid(prefix));
        EXPECT_EQ(x.toStdString(), "1.3.6.1") << prefix;
    }
}

TEST(Oid, RemovePrefixWithTheEmptyPrefixDoesNothing)
{
    Oid x = oid("1.3");
    x.removePrefix(Oid());
    EXPECT_EQ(x.toStdString(), "1.3");
}

TEST(Oid, RemoveCommonPrefixRemovesTheLongestCommonRun)
{
    const Oid other = oid("1.3.7");
    Oid x = oid("1.3.6.1.4");
    EXPECT_EQ(&x.removeCommonPrefix(other), &x);
    EXPECT_EQ(x.toStdString(), "6.1.4");
    EXPECT_EQ(other.toStdString(), "1.3.7");
}

TEST(Oid, RemoveCommonPrefixLeavesAPrefixOfTheOtherEmpty)
{
    Oid x = oid("1.3");
    x.removeCommonPrefix(oid("1.3.6"));
    EXPECT_FALSE(x.isValid());
}

TEST(Oid, RemoveCommonPrefixDoesNothingWithoutACommonFirstArc)
{
    Oid x = oid("2.1");
    x.removeCommonPrefix(oid("1.3"));
    EXPECT_EQ(x.toStdString(), "2.1");
    x.removeCommonPrefix(Oid());
    EXPECT_EQ(x.toStdString(), "2.1");
}

TEST(Oid, RemoveCommonPrefixWithItselfLeavesItEmpty)
{
    Oid x = oid("1.3.6");
    x.removeCommonPrefix(x);
    EXPECT_FALSE(x.isValid());
}
