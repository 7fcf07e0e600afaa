// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/documents/HistoryJson.h"

#include <cmath>

#include "agent/documents/JsonText.h"

namespace agent {

namespace {

QByteArray listOf(const std::vector<float>& values)
{
    QByteArray list = "[";
    const char* separator = "";
    for (const float value : values) {
        list += separator;
        list += std::isfinite(value) ? QByteArray::number(static_cast<double>(value)) : "null";
        separator = ",";
    }
    return list + ']';
}

} // namespace

bool HistoryJson::appendTo(QByteArray& text)
{
    if (!m_isStarted) {
        text += "{\"version\":1,\"check\":" + QByteArray::number(m_check) +
                ",\"seconds\":" + json::seconds(History::intervalMs) + ",\"metrics\":{";
        m_isStarted = true;
        return true;
    }
    const std::optional<Metric> metric = m_checks.nextMetric({m_check, m_metric});
    if (!metric || metric->check != m_check) {
        text += "}}\n";
        return false;
    }
    m_metric = metric->number;
    const std::vector<float> values = m_history.valuesOf({m_check, m_metric});
    if (values.empty())
        return true;
    text += m_separator + ('"' + QByteArray::number(m_metric)) + "\":" + listOf(values);
    m_separator = ",\n";
    return true;
}

} // namespace agent
