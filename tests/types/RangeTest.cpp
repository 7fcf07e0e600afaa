// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <vigil/Range.h>

#include <QLocale>

#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

using vigil::Range;

namespace {

constexpr double lowest = -1.7976931348623157e308;
constexpr double highest = 1.7976931348623157e308;
constexpr double infinity = std::numeric_limits<double>::infinity();
const double notANumber = std::numeric_limits<double>::quiet_NaN();

Range parsed(const std::string& text)
{
    Range range;
    EXPECT_EQ(Range::fromString(text, range), 0) << text;
    return range;
}

/// Parses text into a range from 1 to 2, and returns it even on failure.
Range leftBehindByFailure(const std::string& text)
{
    Range range = Range::CreateRange(1, 2);
    EXPECT_EQ(Range::fromString(text, range), -1) << text;
    return range;
}

bool isRange(const std::string& text)
{
    Range range;
    return Range::fromString(text, range) == 0;
}

void expectBounds(const Range& range, double lower, double upper)
{
    EXPECT_EQ(range.getLowerBound(), lower);
    EXPECT_EQ(range.getUpperBound(), upper);
}

void expectNormal(const Range& range, double lower, double upper)
{
    EXPECT_TRUE(range.isEnabled());
    EXPECT_FALSE(range.isInverse());
    expectBounds(range, lower, upper);
}

void expectInverse(const Range& range, double lower, double upper)
{
    EXPECT_TRUE(range.isEnabled());
    EXPECT_TRUE(range.isInverse());
    expectBounds(range, lower, upper);
}

void expectMatchesEverything(const Range& range)
{
    for (const double value : {lowest, -infinity, -1.0, 0.0, 1.0, highest, infinity, notANumber})
        EXPECT_TRUE(range.match(value)) << value;
}

} // namespace

static_assert(static_cast<int>(Range::RangeMode::Off) == 0, "binary interface");
static_assert(static_cast<int>(Range::RangeMode::Normal) == 1, "binary interface");
static_assert(static_cast<int>(Range::RangeMode::Inverse) == 2, "binary interface");
static_assert(static_cast<int>(Range::RangeMode::Unset) == 3, "binary interface");
static_assert(sizeof(Range::RangeMode) == 4, "binary interface");
static_assert(sizeof(void*) != 8 || sizeof(Range) == 32, "binary interface");
static_assert(std::has_virtual_destructor_v<Range>, "binary interface");
static_assert(!std::is_constructible_v<Range, double, double, Range::RangeMode>, "the factories are the way");

TEST(Range, ADefaultRangeIsNotEnabledAndPrintsAsTheEmptyText)
{
    const Range range;
    EXPECT_FALSE(range.isEnabled());
    EXPECT_FALSE(range.isInverse());
    EXPECT_EQ(range.toString(), "");
    expectBounds(range, lowest, highest);
    expectMatchesEverything(range);
}

TEST(Range, NoLimitIsNotEnabledAndPrintsAsOff)
{
    const Range range = Range::CreateNoLimit();
    EXPECT_FALSE(range.isEnabled());
    EXPECT_FALSE(range.isInverse());
    EXPECT_EQ(range.toString(), "off");
    expectBounds(range, lowest, highest);
    expectMatchesEverything(range);
}

TEST(Range, BothBoundsOfANormalRangeAreAcceptable)
{
    const Range range = Range::CreateRange(10, 20);
    EXPECT_TRUE(range.match(10));
    EXPECT_TRUE(range.match(15));
    EXPECT_TRUE(range.match(20));
    EXPECT_FALSE(range.match(9.999));
    EXPECT_FALSE(range.match(20.001));
}

TEST(Range, BothBoundsOfAnInverseRangeAreNotAcceptable)
{
    const Range range = Range::CreateInverseRange(10, 20);
    EXPECT_FALSE(range.match(10));
    EXPECT_FALSE(range.match(15));
    EXPECT_FALSE(range.match(20));
    EXPECT_TRUE(range.match(9.999));
    EXPECT_TRUE(range.match(20.001));
}

TEST(Range, ANaNValueCountsAsInsideTheInterval)
{
    EXPECT_TRUE(Range::CreateRange(10, 20).match(notANumber));
    EXPECT_FALSE(Range::CreateInverseRange(10, 20).match(notANumber));
}

TEST(Range, ANaNBoundLimitsNothing)
{
    EXPECT_TRUE(Range::CreateRange(notANumber, 20).match(-1000));
    EXPECT_FALSE(Range::CreateRange(notANumber, 20).match(21));
    EXPECT_TRUE(Range::CreateRange(10, notANumber).match(1000));
    EXPECT_FALSE(Range::CreateRange(10, notANumber).match(9));
}

TEST(Range, InfinitiesAreOutsideTheUnboundedRange)
{
    EXPECT_FALSE(parsed("~:").match(infinity));
    EXPECT_FALSE(parsed("~:").match(-infinity));
    EXPECT_TRUE(parsed("~:").match(highest));
    EXPECT_TRUE(parsed("~:").match(lowest));
}

TEST(Range, NoValueMatchesANormalRangeWithSwappedBounds)
{
    const Range range = Range::CreateRange(20, 10);
    for (const double value : {5.0, 10.0, 15.0, 20.0, 25.0}) {
        EXPECT_FALSE(range.match(value)) << value;
        EXPECT_TRUE(Range::CreateInverseRange(20, 10).match(value)) << value;
    }
}

TEST(Range, ThresholdAboveAlarmsOnlyAboveTheThreshold)
{
    const Range range = Range::CreateThresholdAbove(80);
    EXPECT_EQ(range.toString(), "~:80");
    EXPECT_TRUE(range.match(80));
    EXPECT_TRUE(range.match(-1e300));
    EXPECT_FALSE(range.match(80.5));
    expectNormal(range, lowest, 80);
}

TEST(Range, ThresholdBelowAlarmsOnlyBelowTheThreshold)
{
    const Range range = Range::CreateThresholdBelow(5);
    EXPECT_EQ(range.toString(), "5:");
    EXPECT_TRUE(range.match(5));
    EXPECT_TRUE(range.match(1e300));
    EXPECT_FALSE(range.match(4.9));
    expectNormal(range, 5, highest);
}

TEST(Range, TheFactoriesSetModeAndBounds)
{
    expectNormal(Range::CreateRange(10, 20), 10, 20);
    expectInverse(Range::CreateInverseRange(10, 20), 10, 20);
    expectNormal(Range::CreateRange(20, 10), 20, 10);
}

TEST(Range, TheSettersChangeOneBoundAndNothingElse)
{
    Range range = Range::CreateInverseRange(10, 20);
    range.setLowerBound(1);
    expectInverse(range, 1, 20);
    range.setUpperBound(2);
    expectInverse(range, 1, 2);

    Range off = Range::CreateNoLimit();
    off.setUpperBound(5);
    EXPECT_EQ(off.toString(), "off");
    EXPECT_TRUE(off.match(6));
    expectBounds(off, lowest, 5);
}

TEST(Range, CopiesTakeModeAndBounds)
{
    const Range source = Range::CreateInverseRange(10, 20);
    const Range constructed(source);
    Range assigned;
    EXPECT_EQ(&(assigned = source), &assigned);
    expectInverse(constructed, 10, 20);
    expectInverse(assigned, 10, 20);
}

TEST(Range, TheEmptyTextIsAnUnsetRange)
{
    Range range = Range::CreateInverseRange(10, 20);
    ASSERT_EQ(Range::fromString("", range), 0);
    EXPECT_FALSE(range.isEnabled());
    EXPECT_EQ(range.toString(), "");
    expectBounds(range, lowest, highest);
}

TEST(Range, OffIsARangeSwitchedOff)
{
    Range range = Range::CreateInverseRange(10, 20);
    ASSERT_EQ(Range::fromString("off", range), 0);
    EXPECT_FALSE(range.isEnabled());
    EXPECT_EQ(range.toString(), "off");
    expectBounds(range, lowest, highest);
}

TEST(Range, OffMustBeInLowerCaseWithoutBlanks)
{
    for (const char* text : {"OFF", "Off", " off", "off ", "@off", "off:"})
        EXPECT_FALSE(isRange(text)) << text;
}

TEST(Range, EveryAcceptedFormGivesItsModeAndBounds)
{
    expectNormal(parsed("10"), 0, 10);
    expectNormal(parsed("10:"), 10, highest);
    expectNormal(parsed("~:10"), lowest, 10);
    expectNormal(parsed("10:20"), 10, 20);
    expectInverse(parsed("@10:20"), 10, 20);
    expectInverse(parsed("@10"), 0, 10);
    expectNormal(parsed("~:"), lowest, highest);
    expectInverse(parsed("@~:10"), lowest, 10);
    expectInverse(parsed("@10:"), 10, highest);
}

TEST(Range, EveryAcceptedFormPrintsBackAsItself)
{
    for (const char* text : {"", "off", "10", "10:", "~:10", "10:20", "@10:20", "@10", "~:"})
        EXPECT_EQ(parsed(text).toString(), text);
}

TEST(Range, SignsFractionsAndExponentsAreRead)
{
    expectNormal(parsed("-5.5:+2.25"), -5.5, 2.25);
    expectNormal(parsed("1e3:2E+3"), 1000, 2000);
    expectNormal(parsed(".5:1."), 0.5, 1);
    expectNormal(parsed("-10"), 0, -10);
}

TEST(Range, ALowerBoundAboveTheUpperOneIsAccepted)
{
    expectNormal(parsed("20:10"), 20, 10);
    EXPECT_FALSE(parsed("20:10").match(15));
}

TEST(Range, AnEmptyLowerPartIsAnErrorNotZero)
{
    EXPECT_FALSE(isRange(":10"));
    EXPECT_FALSE(isRange("@:10"));
    EXPECT_FALSE(isRange(":"));
}

TEST(Range, ATildeIsAcceptedOnlyAsTheWholeLowerPart)
{
    for (const char* text : {"10:~", "~", "@~", "~1:10", "~~:10", " ~:10", "~:~"})
        EXPECT_FALSE(isRange(text)) << text;
}

TEST(Range, TextOtherThanANumberIsAnError)
{
    for (const char* text : {"abc", "10x", "1,5", "0x10", "10;20", "1 000", "--1", "e5", "10:abc", "abc:10"})
        EXPECT_FALSE(isRange(text)) << text;
}

TEST(Range, DigitGroupsNonAsciiDigitsAndNulBytesAreErrors)
{
    for (const char* text : {"1,000", "1.000.000", "\xD9\xA1\xD9\xA0", "1\xFF"})
        EXPECT_FALSE(isRange(text)) << text;
    EXPECT_FALSE(isRange(std::string("10\0", 3)));
    EXPECT_FALSE(isRange(std::string("off\0", 4)));
    EXPECT_FALSE(isRange(std::string(1, '\0')));
}

TEST(Range, NumbersAreReadAndWrittenWithAPointInEveryLocale)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(Range::CreateRange(1.5, 1234.5).toString(), "1.5:1234.5");
    expectNormal(parsed("1.5:1234.5"), 1.5, 1234.5);
    EXPECT_FALSE(isRange("1,5"));
    QLocale::setDefault(before);
}

TEST(Range, AnAtSignAloneIsAnError)
{
    EXPECT_FALSE(isRange("@"));
    EXPECT_FALSE(isRange("@@10"));
    EXPECT_FALSE(isRange(" @10"));
    EXPECT_FALSE(isRange("10@"));
}

TEST(Range, ThreePartsAreAnErrorAndKeepTheBounds)
{
    expectNormal(leftBehindByFailure("1:2:3"), 1, 2);
    expectInverse(leftBehindByFailure("@5:6:"), 1, 2);
    expectNormal(leftBehindByFailure("::"), 1, 2);
}

TEST(Range, AFailureOverwritesTheMode)
{
    expectInverse(leftBehindByFailure("@abc"), 0, 0);

    Range off = Range::CreateNoLimit();
    EXPECT_EQ(Range::fromString("abc", off), -1);
    expectNormal(off, 0, 0);
}

TEST(Range, AMalformedSingleNumberSetsTheUpperBoundToZero)
{
    expectNormal(leftBehindByFailure("abc"), 0, 0);
}

TEST(Range, AMalformedLowerPartKeepsTheUpperBound)
{
    expectNormal(leftBehindByFailure("abc:20"), 0, 2);
}

TEST(Range, AMalformedUpperPartKeepsTheParsedLowerBound)
{
    expectNormal(leftBehindByFailure("7:abc"), 7, 0);
    expectInverse(leftBehindByFailure("@~:abc"), lowest, 0);
}

TEST(Range, BlanksAroundANumberAreIgnored)
{
    expectNormal(parsed(" 10 "), 0, 10);
    expectNormal(parsed("10 : 20"), 10, 20);
    EXPECT_FALSE(isRange(" "));
    EXPECT_FALSE(isRange("10: "));
}

TEST(Range, InfAndNanAreNumbers)
{
    expectNormal(parsed("inf"), 0, infinity);
    expectNormal(parsed("-inf:inf"), -infinity, infinity);
    EXPECT_TRUE(std::isnan(parsed("nan").getUpperBound()));
}

TEST(Range, InfiniteBoundsPrintAsUnbounded)
{
    EXPECT_EQ(Range::CreateRange(-infinity, infinity).toString(), "~:");
    EXPECT_EQ(Range::CreateRange(-infinity, 5).toString(), "~:5");
    EXPECT_EQ(Range::CreateRange(5, infinity).toString(), "5:");
}

TEST(Range, ANaNLowerBoundIsPrintedAndANaNUpperBoundIsNot)
{
    EXPECT_EQ(Range::CreateRange(notANumber, 5).toString(), "nan:5");
    EXPECT_EQ(Range::CreateRange(5, notANumber).toString(), "5:");
}

TEST(Range, ALowerBoundOfZeroIsNotPrinted)
{
    EXPECT_EQ(Range::CreateRange(0, 10).toString(), "10");
    EXPECT_EQ(Range::CreateRange(-0.0, 10).toString(), "10");
    EXPECT_EQ(Range::CreateInverseRange(0, 10).toString(), "@10");
    EXPECT_EQ(Range::CreateRange(1e-9, 10).toString(), "1e-09:10");
}

TEST(Range, NumbersPrintWithSixSignificantDigits)
{
    EXPECT_EQ(Range::CreateRange(0, 1234567.0).toString(), "1.23457e+06");
    EXPECT_EQ(Range::CreateRange(0, 0.1).toString(), "0.1");
    EXPECT_EQ(Range::CreateRange(-1.5, 2.5).toString(), "-1.5:2.5");
    EXPECT_EQ(Range::CreateRange(0, 123456.0).toString(), "123456");
    EXPECT_EQ(Range::CreateRange(0, 1.0000001).toString(), "1");
    EXPECT_EQ(Range::CreateRange(-1234567.0, 0).toString(), "-1.23457e+06:0");
}

TEST(Range, TextKeepsOnlySixDigits)
{
    expectNormal(parsed(Range::CreateRange(0, 1234567.0).toString()), 0, 1234570.0);
}

TEST(Range, TheRangeFromZeroWithoutUpperBoundPrintsAsTheEmptyTextAndParsesAsUnset)
{
    const Range range = Range::CreateRange(0, highest);
    EXPECT_TRUE(range.isEnabled());
    EXPECT_EQ(range.toString(), "");
    EXPECT_FALSE(parsed(range.toString()).isEnabled());
}

TEST(Range, TheInverseRangeFromZeroWithoutUpperBoundPrintsAsInvalidText)
{
    const Range range = Range::CreateInverseRange(0, highest);
    EXPECT_EQ(range.toString(), "@");
    EXPECT_FALSE(isRange(range.toString()));
}

TEST(Range, ANumberTooLargeForADoubleIsAnError)
{
    EXPECT_FALSE(isRange("1e400"));
    EXPECT_FALSE(isRange("-1e400:5"));
}

TEST(Range, TheLargestNumberIsParsedAsNoBound)
{
    expectNormal(parsed("1.7976931348623157e308"), 0, highest);
    EXPECT_EQ(parsed("5:1.7976931348623157e308").toString(), "5:");
}
