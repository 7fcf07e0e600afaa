// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_RANGE_H
#define VIGIL_RANGE_H

#include <string>

#include <vigil/vigil_export.h>

namespace vigil {

/// One threshold of a metric: a closed interval of doubles, and a mode for the acceptable side of it.
///
/// \code
/// vigil::Range range;
/// if (vigil::Range::fromString("~:80", range) == 0 && !range.match(85))
///     std::cout << "85 is too high for " << range.toString();
/// range = vigil::Range::CreateRange(10, 20);
/// \endcode
///
/// Purpose: judges values. The text form is the notation of monitoring plugins:
///
///     "10"      acceptable from 0 to 10             "@10:20"  acceptable outside 10 to 20
///     "10:"     acceptable from 10 upwards          "@10"     acceptable outside 0 to 10
///     "~:10"    acceptable up to 10                 "off"     everything is acceptable, deliberately
///     "10:20"   acceptable from 10 to 20            ""        everything is acceptable, never configured
///
/// Units: those of the metric.
///
/// Threads: a plain value without locks. Several threads may read one object while none changes it.
///
/// Failure: fromString() returns -1 for text other than a range. No operation throws, except std::bad_alloc
/// from the two text functions.
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

    /// No threshold: mode Unset, without bounds. Prints as the empty text.
    Range();
    Range(const Range& other);
    Range& operator=(const Range& other);
    virtual ~Range();

    /// Acceptable from lower to upper, both inclusive. If lower is above upper, no value is acceptable.
    static Range CreateRange(double lower, double upper);

    /// Acceptable below lower and above upper; a value equal to a bound is not acceptable.
    static Range CreateInverseRange(double lower, double upper);

    /// A threshold switched off: mode Off, unlike the default constructor. Prints as "off".
    static Range CreateNoLimit();

    /// Alarm for values above x: acceptable up to and including x.
    static Range CreateThresholdAbove(double x);

    /// Alarm for values below x: acceptable from x upwards.
    static Range CreateThresholdBelow(double x);

    /// Parses text into out. Returns 0, or -1 for text other than a range. A failure leaves out half written:
    /// parse into a scratch Range to keep the old one. The decimal point is "." in every locale.
    static int fromString(const std::string& text, Range& out);

    /// The text form, with six significant digits. Two ranges cannot be parsed back: the normal range from 0
    /// without an upper bound prints as the empty text, like a range never configured; the inverse one prints
    /// as "@", an error for fromString().
    std::string toString() const;

    /// True if value is acceptable. NaN counts as inside the interval.
    bool match(double value) const;

    /// True in the modes Normal and Inverse.
    bool isEnabled() const;

    /// True in the mode Inverse.
    bool isInverse() const;

    /// The bounds, inclusive. The smallest and the largest finite double stand for "no bound".
    double getLowerBound() const;
    double getUpperBound() const;

    /// Replace one bound; mode and other bound stay.
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
