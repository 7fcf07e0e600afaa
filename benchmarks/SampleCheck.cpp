// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "benchmarks/SampleCheck.h"

#include <cstdio>

namespace {

const std::string secondKey = "hc";

/// With these keys the identifier of a cell has 30 arcs.
std::string nameOf(int index)
{
    char name[16];
    std::snprintf(name, sizeof(name), "m%06d", index);
    return name;
}

void appendText(vigil::Oid& oid, const std::string& text)
{
    oid.append(static_cast<unsigned int>(text.size()));
    for (const char letter : text)
        oid.append(static_cast<unsigned int>(letter));
}

} // namespace

SampleCheck::SampleCheck(int metrics, const std::string& firstKey)
    : m_firstKey(firstKey), m_check(vigil::createHealthCheck(firstKey, secondKey))
{
    m_check->setDescription("A sample");
    for (int i = 0; i < metrics; ++i) {
        vigil::ScalarMetric* metric = m_check->createScalarMetric(nameOf(i));
        metric->setUnit(" ms");
        metric->setWarningRange(vigil::Range::CreateThresholdAbove(80000000));
        metric->setCriticalRange(vigil::Range::CreateThresholdAbove(90000000));
        m_metrics.push_back(metric);
    }
}

SampleCheck::~SampleCheck()
{
    for (vigil::ScalarMetric* metric : m_metrics)
        metric->remove();
    m_check->destroy();
}

void SampleCheck::update()
{
    ++m_value;
    for (vigil::ScalarMetric* metric : m_metrics)
        metric->setValue(m_value);
    m_check->update();
}

vigil::Oid SampleCheck::lastValueCell() const
{
    return cellOf(4, 2, metrics() - 1);
}

vigil::Oid SampleCheck::warningRangeCell(int index) const
{
    return cellOf(2, 3, index);
}

vigil::Oid SampleCheck::cellOf(unsigned int table, unsigned int column, int metric) const
{
    vigil::Oid cell = vigil::Oid::fromStdString("1.3.6.1.4.1.32473.127.3.1.200.4");
    cell << table << 1 << column;
    appendText(cell, m_firstKey);
    appendText(cell, secondKey);
    appendText(cell, nameOf(metric));
    return cell;
}
