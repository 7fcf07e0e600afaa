// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/Range.h>

#include <QString>
#include <QStringList>

#include <cmath>
#include <limits>

namespace vigil {

namespace {

// A host may trap floating-point exceptions. The operators "<" and ">" raise one for NaN, std::isless() and
// the like do not.

constexpr double noLowerBound = std::numeric_limits<double>::lowest();
constexpr double noUpperBound = (std::numeric_limits<double>::max)();

bool parseNumber(const QString& text, double& out)
{
    bool isNumber = false;
    out = text.toDouble(&isNumber);
    return isNumber;
}

bool parseLowerBound(const QString& text, double& out)
{
    if (text == QLatin1String("~")) {
        out = noLowerBound;
        return true;
    }
    return parseNumber(text, out);
}

bool parseUpperBound(const QString& text, double& out)
{
    if (text.isEmpty()) {
        out = noUpperBound;
        return true;
    }
    return parseNumber(text, out);
}

} // namespace

Range::Range() : Range(noLowerBound, noUpperBound, RangeMode::Unset) {}

Range::Range(double lower, double upper, RangeMode mode) : m_lower(lower), m_upper(upper), m_mode(mode) {}

Range::Range(const Range& other) = default;
Range& Range::operator=(const Range& other) = default;
Range::~Range() = default;

Range Range::CreateRange(double lower, double upper)
{
    return {lower, upper, RangeMode::Normal};
}

Range Range::CreateInverseRange(double lower, double upper)
{
    return {lower, upper, RangeMode::Inverse};
}

Range Range::CreateNoLimit()
{
    return {noLowerBound, noUpperBound, RangeMode::Off};
}

Range Range::CreateThresholdAbove(double x)
{
    return {noLowerBound, x, RangeMode::Normal};
}

Range Range::CreateThresholdBelow(double x)
{
    return {x, noUpperBound, RangeMode::Normal};
}

int Range::fromString(const std::string& text, Range& out)
{
    QString rest = QString::fromStdString(text);
    if (rest.isEmpty()) {
        out = Range();
        return 0;
    }
    if (rest == QLatin1String("off")) {
        out = CreateNoLimit();
        return 0;
    }

    // The mode is written before the bounds are known to be good: callers see it even on failure.
    out.m_mode = RangeMode::Normal;
    if (rest.startsWith(QLatin1Char('@'))) {
        out.m_mode = RangeMode::Inverse;
        rest.remove(0, 1);
    }

    const QStringList parts = rest.split(QLatin1Char(':'));
    if (parts.size() == 1) {
        out.m_lower = 0.0;
        return parseNumber(parts[0], out.m_upper) ? 0 : -1;
    }
    if (parts.size() == 2)
        return parseLowerBound(parts[0], out.m_lower) && parseUpperBound(parts[1], out.m_upper) ? 0 : -1;
    return -1;
}

std::string Range::toString() const
{
    if (m_mode == RangeMode::Off)
        return "off";
    QString text;
    if (isEnabled()) {
        if (isInverse())
            text += QLatin1Char('@');
        if (std::islessequal(m_lower, noLowerBound))
            text += QLatin1String("~:");
        else if (m_lower != 0.0)
            text += QStringLiteral("%1:").arg(m_lower);
        if (std::isless(m_upper, noUpperBound))
            text += QStringLiteral("%1").arg(m_upper);
    }
    return text.toStdString();
}

bool Range::match(double value) const
{
    if (!isEnabled())
        return true;
    // False for NaN
    const bool isOutside = std::isgreater(m_lower, value) || std::isgreater(value, m_upper);
    return isOutside == isInverse();
}

bool Range::isEnabled() const
{
    return m_mode == RangeMode::Normal || m_mode == RangeMode::Inverse;
}

bool Range::isInverse() const
{
    return m_mode == RangeMode::Inverse;
}

double Range::getLowerBound() const
{
    return m_lower;
}

double Range::getUpperBound() const
{
    return m_upper;
}

void Range::setLowerBound(double lower)
{
    m_lower = lower;
}

void Range::setUpperBound(double upper)
{
    m_upper = upper;
}

} // namespace vigil
