// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_RANGE_H
#define VIGIL_RANGE_H

#include <string>

#include <vigil/vigil_export.h>

namespace vigil {

/// One threshold of a metric: a closed interval of doubles and a mode that says which side of it is
/// acceptable.
///
/// Purpose: judges values. The text form is the notation of monitoring plugins:
///
///     "10"      acceptable from 0 to 10             "@10:20"  acceptable outside 10 to 20
///     "10:"     acceptable from 10 upwards          "@10"     acceptable outside 0 to 10
///     "~:10"    acceptable up to 10                 "off"     everything is acceptable, deliberately
///     "10:20"   acceptable from 10 to 20            ""        everything is acceptable, never configured
///
/// Units: those of the metric that the range is given to.
///
/// Threads: a plain value without locks; see Oid.
///
/// Ownership: owns nothing, copies freely.
///
/// Failure: nothing throws; fromString() returns -1 for text that is not a range.
class VIGIL_EXPORT Range
{
public:
    /// The numbers are part of the binary interface.
    enum class RangeMode : int {
        Off = 0,     ///< switched off: every value is acceptable
        Normal = 1,  ///< acceptable when lower <= value <= upper
        Inverse = 2, ///< acceptable when value < lower or value > upper
        Unset = 3    ///< never configured: every value is acceptable
    };

    /// No threshold given: mode Unset, without bounds. Prints as the empty text.
    Range();
    Range(const Range& other);
    Range& operator=(const Range& other);
    virtual ~Range();

    /// Acceptable from lower to upper, both inclusive. A lower above the upper bound is taken as it is: then
    /// no value is acceptable.
    static Range CreateRange(double lower, double upper);

    /// Acceptable below lower and above upper; a value equal to a bound is not acceptable.
    static Range CreateInverseRange(double lower, double upper);

    /// A threshold that is switched off (mode Off, unlike the default constructor). Prints as "off".
    static Range CreateNoLimit();

    /// Alarm for values above x: acceptable up to and including x.
    static Range CreateThresholdAbove(double x);

    /// Alarm for values below x: acceptable from x upwards.
    static Range CreateThresholdBelow(double x);

    /// Parses text into out. Returns 0, or -1 for text that is not a range; out is then half written, so
    /// parse into a scratch Range where the old one must survive. Numbers are written with "." in every
    /// locale.
    static int fromString(const std::string& text, Range& out);

    /// The text form, with six significant digits. Two ranges do not survive the way through text: the normal
    /// range from 0 without an upper bound prints as the empty text, and the inverse one as "@", which does
    /// not parse.
    std::string toString() const;

    /// True when value is acceptable. NaN counts as inside the interval.
    bool match(double value) const;

    /// True in the modes Normal and Inverse.
    bool isEnabled() const;

    /// True in the mode Inverse.
    bool isInverse() const;

    /// The bounds, inclusive. The smallest and the largest finite double stand for "no bound".
    double getLowerBound() const;
    double getUpperBound() const;

    /// Replace one bound; neither the mode nor the other bound changes.
    void setLowerBound(double lower);
    void setUpperBound(double upper);

private:
    Range(double lower, double upper, RangeMode mode);

    double m_lower;
    double m_upper;
    RangeMode m_mode;
};

} // namespace vigil

#endif
