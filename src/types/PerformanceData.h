// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TYPES_PERFORMANCEDATA_H
#define VIGIL_TYPES_PERFORMANCEDATA_H

#include <string>

#include <vigil/Range.h>

/// The numbers of one metric's result, for graphs. Texts are UTF-8. Ranges are stored as text, the form they
/// are published in.
class PerformanceData
{
public:
    virtual ~PerformanceData() = default;

    void setLabel(const std::string& label) { m_label = label; }
    void setValue(double value) { m_value = value; }
    void setUnit(const std::string& unit) { m_unit = unit; }
    void setWarning(const vigil::Range& range) { setWarningText(range.toString()); }
    void setCritical(const vigil::Range& range) { setCriticalText(range.toString()); }

    /// The text of a range.
    void setWarningText(const std::string& range) { m_warning = range; }
    void setCriticalText(const std::string& range) { m_critical = range; }

    std::string getLabel() const { return m_label; }
    double getValue() const { return m_value; }
    std::string getUnit() const { return m_unit; }
    std::string getWarning() const { return m_warning; }
    std::string getCritical() const { return m_critical; }

private:
    std::string m_label;
    double m_value = 0.0;
    std::string m_unit;
    std::string m_warning;
    std::string m_critical;
};

#endif
