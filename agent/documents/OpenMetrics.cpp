// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/documents/OpenMetrics.h"

#include "agent/checks/RangeBounds.h"
#include "agent/documents/JsonText.h"
#include "agent/documents/SeriesLabels.h"
#include "base/BuildInfo.h"

namespace agent {

namespace {

/// A family of series: one or more for each check, or for each metric.
struct Family
{
    const char* name;
    const char* type;
    const char* unit;
    const char* help;
    QByteArray (*ofCheck)(const char* name, const QByteArray& labels, const Check& check);
    QByteArray (*ofMetric)(const char* name, const QByteArray& labels, const Metric& metric);
};

QByteArray sample(const char* name, const QByteArray& labels, const QByteArray& value)
{
    return QByteArray(name) + '{' + labels + "} " + value + '\n';
}

QByteArray statuses(const char* name, const QByteArray& labels, int status)
{
    QByteArray samples;
    for (const int each : status::bySeverity)
        samples += sample(name, labels + ',' + name + "=\"" + json::statusName(each) + '"',
                          each == status ? "1" : "0");
    return samples;
}

QByteArray checkStatus(const char* name, const QByteArray& labels, const Check& check)
{
    return statuses(name, labels, check.status);
}

QByteArray checkSeverity(const char* name, const QByteArray& labels, const Check& check)
{
    return sample(name, labels, QByteArray::number(check.severity()));
}

QByteArray checkSince(const char* name, const QByteArray& labels, const Check& check)
{
    return sample(name, labels, json::seconds(check.since.toMSecsSinceEpoch()));
}

QByteArray checkAge(const char* name, const QByteArray& labels, const Check& check)
{
    return check.ageMs < 0 ? QByteArray() : sample(name, labels, json::seconds(check.ageMs));
}

QByteArray checkUpdates(const char* name, const QByteArray& labels, const Check& check)
{
    return sample(name + QByteArrayLiteral("_total"), labels, QByteArray::number(check.updates));
}

QByteArray checkMuted(const char* name, const QByteArray& labels, const Check& check)
{
    return sample(name, labels, check.mutedUntil.isNull() ? "0" : "1");
}

QByteArray metricStatus(const char* name, const QByteArray& labels, const Metric& metric)
{
    return statuses(name, labels, metric.status);
}

QByteArray metricSeverity(const char* name, const QByteArray& labels, const Metric& metric)
{
    return sample(name, labels, QByteArray::number(metric.severity()));
}

/// Nothing unless the text is a number.
QByteArray numberSample(const char* name, const QByteArray& labels, const std::string& text)
{
    const QByteArray value = json::number(text);
    return value == "null" ? QByteArray() : sample(name, labels, value);
}

QByteArray metricValue(const char* name, const QByteArray& labels, const Metric& metric)
{
    return numberSample(name, labels, metric.value);
}

QByteArray bounds(const char* name, const QByteArray& labels, const char* range, const std::string& text)
{
    const RangeBounds bounds = boundsOf(text);
    const QByteArray ofRange = labels + ",range=\"" + range + "\",bound=";
    return numberSample(name, ofRange + "\"lower\"", bounds.lower) +
           numberSample(name, ofRange + "\"upper\"", bounds.upper);
}

QByteArray metricBounds(const char* name, const QByteArray& labels, const Metric& metric)
{
    return bounds(name, labels, "warning", metric.warningRange) +
           bounds(name, labels, "critical", metric.criticalRange);
}

QByteArray inverse(const char* name, const QByteArray& labels, const char* range, const std::string& text)
{
    const RangeBounds bounds = boundsOf(text);
    if (!bounds.isLimited())
        return {};
    return sample(name, labels + ",range=\"" + range + '"', bounds.isInverse ? "1" : "0");
}

QByteArray metricInverse(const char* name, const QByteArray& labels, const Metric& metric)
{
    return inverse(name, labels, "warning", metric.warningRange) +
           inverse(name, labels, "critical", metric.criticalRange);
}

QByteArray metricInfo(const char* name, const QByteArray& labels, const Metric& metric)
{
    return sample(name + QByteArrayLiteral("_info"),
                  labels + ",unit=" + labelValue(QByteArray::fromStdString(metric.unit)), "1");
}

constexpr Family families[] = {
    {"vigil_check_status", "stateset", "", "Status of the health check.", checkStatus, nullptr},
    {"vigil_check_severity", "gauge", "", "Status as a number: 0 ok, 1 unknown, 2 warning, 3 critical.",
     checkSeverity, nullptr},
    {"vigil_check_since_timestamp_seconds", "gauge", "seconds", "Time of the last change of the status.",
     checkSince, nullptr},
    {"vigil_check_age_seconds", "gauge", "seconds", "Time since the last update by the application.",
     checkAge, nullptr},
    {"vigil_check_updates", "counter", "", "Updates by the application.", checkUpdates, nullptr},
    {"vigil_check_muted", "gauge", "", "1 while an operator has muted the check.", checkMuted, nullptr},
    {"vigil_metric_status", "stateset", "", "Status of the metric.", nullptr, metricStatus},
    {"vigil_metric_severity", "gauge", "", "Status as a number: 0 ok, 1 unknown, 2 warning, 3 critical.",
     nullptr, metricSeverity},
    {"vigil_metric_value", "gauge", "", "Last value; vigil_metric_info has its unit.", nullptr, metricValue},
    {"vigil_metric_bound", "gauge", "", "Bounds of the warning and the critical range.", nullptr,
     metricBounds},
    {"vigil_metric_range_inverse", "gauge", "", "1 if the values within the bounds are the bad ones.",
     nullptr, metricInverse},
    {"vigil_metric", "info", "", "Unit of the value.", nullptr, metricInfo},
};

} // namespace

OpenMetrics::Format OpenMetrics::formatFor(const QByteArray& accept)
{
    return accept.contains("application/openmetrics-text") ? Format::OpenMetrics : Format::PrometheusText;
}

bool OpenMetrics::appendTo(QByteArray& text)
{
    if (m_family == std::size(families)) {
        text += agentFamilies();
        if (m_format == Format::OpenMetrics)
            text += "# EOF\n";
        return false;
    }
    const Family& family = families[m_family];
    if (!m_isStarted) {
        text += header(family.name, family.type, family.unit, family.help);
        m_isStarted = true;
        m_last = {0, 0};
    } else if (!(family.ofCheck ? appendCheck(text) : appendMetric(text))) {
        m_isStarted = false;
        ++m_family;
    }
    return true;
}

/// The older format has fewer types, and the name of a family there is that of its samples.
QByteArray OpenMetrics::header(const QByteArray& name, const char* type, const char* unit,
                               const char* help) const
{
    QByteArray family = name;
    QByteArray known = type;
    if (m_format == Format::PrometheusText) {
        if (known == "counter")
            family += "_total";
        else if (known == "info")
            family += "_info";
        known = known == "counter" ? "counter" : "gauge";
    }
    QByteArray text = "# HELP " + family + ' ' + help + "\n# TYPE " + family + ' ' + known + '\n';
    if (m_format == Format::OpenMetrics && *unit)
        text += "# UNIT " + family + ' ' + unit + '\n';
    return text;
}

bool OpenMetrics::appendCheck(QByteArray& text)
{
    const std::optional<Check> check = m_checks.next(m_last.first);
    if (!check)
        return false;
    m_last.first = check->number;
    text += families[m_family].ofCheck(families[m_family].name, seriesLabels(check->id), *check);
    return true;
}

bool OpenMetrics::appendMetric(QByteArray& text)
{
    const std::optional<Metric> metric = m_checks.nextMetric(m_last);
    if (!metric)
        return false;
    m_last = {metric->check, metric->number};
    text += families[m_family].ofMetric(families[m_family].name, seriesLabels(metric->id), *metric);
    return true;
}

QByteArray OpenMetrics::agentFamilies() const
{
    QByteArray text = header("vigil_agent", "info", "", "Version of the agent.") +
                      sample("vigil_agent_info", "version=" + labelValue(base::buildInfo::version()), "1");
    for (const AgentFigure& figure : m_figures) {
        const QByteArray name = QByteArrayLiteral("vigil_agent_") + figure.name;
        const char* unit = name.endsWith("_seconds") ? "seconds" : name.endsWith("_bytes") ? "bytes" : "";
        text += header(name, figure.isCounter ? "counter" : "gauge", unit, figure.help) + name +
                (figure.isCounter ? "_total " : " ") + json::number(figure.value) + '\n';
    }
    return text;
}

} // namespace agent
