// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QStringList>

#include <map>
#include <set>

#include "agent/documents/OpenMetrics.h"
#include "support/PublishedChecks.h"

using agent::OpenMetrics;
using Format = OpenMetrics::Format;

namespace {

/// Reads a reply as strictly as the text formats define it.
class MetricsParser
{
public:
    explicit MetricsParser(const QByteArray& text)
    {
        EXPECT_TRUE(text.endsWith('\n'));
        QStringList lines = QString::fromUtf8(text).split(QLatin1Char('\n'));
        lines.removeLast();
        for (const QString& line : lines)
            read(line);
    }

    QString value(const QString& series) const { return m_series.value(series, QStringLiteral("missing")); }
    int size() const { return m_series.size(); }
    bool hasEnd() const { return m_hasEnd; }
    QString type(const QString& family) const { return m_types.value(family); }

private:
    void read(const QString& line)
    {
        static const QRegularExpression comment(QStringLiteral("^# (HELP|TYPE|UNIT) ([a-z_]+) (\\S.*)$"));
        static const QRegularExpression sample(
            QStringLiteral("^([a-z_]+)(\\{(?:[a-z_]+=\"(?:[^\"\\\\\\n]|\\\\[\\\\\"n])*\",?)*\\})? (\\S+)$"));
        EXPECT_FALSE(m_hasEnd) << "after the end: " << qPrintable(line);
        if (line == QLatin1String("# EOF")) {
            m_hasEnd = true;
        } else if (line.startsWith(QLatin1Char('#'))) {
            const QRegularExpressionMatch match = comment.match(line);
            ASSERT_TRUE(match.hasMatch()) << qPrintable(line);
            startFamily(match.captured(1), match.captured(2), match.captured(3));
        } else {
            const QRegularExpressionMatch match = sample.match(line);
            ASSERT_TRUE(match.hasMatch()) << qPrintable(line);
            addSample(match.captured(1), match.captured(2), match.captured(3));
        }
    }

    void startFamily(const QString& kind, const QString& family, const QString& text)
    {
        if (family != m_family) {
            EXPECT_FALSE(m_types.contains(family)) << "in two places: " << qPrintable(family);
        }
        m_family = family;
        if (kind == QLatin1String("TYPE")) {
            m_types[family] = text;
        } else if (kind == QLatin1String("UNIT")) {
            EXPECT_TRUE(family.endsWith(QLatin1Char('_') + text)) << qPrintable(family);
        }
    }

    void addSample(const QString& name, const QString& labels, const QString& value)
    {
        static const std::map<QString, QString> endings = {
            {QStringLiteral("counter"), QStringLiteral("_total")},
            {QStringLiteral("info"), QStringLiteral("_info")}};
        const auto ending = endings.find(m_types.value(m_family));
        const bool hasEnding = ending != endings.end() && !m_family.endsWith(ending->second);
        EXPECT_EQ(name, hasEnding ? m_family + ending->second : m_family);
        bool isNumber = false;
        value.toDouble(&isNumber);
        EXPECT_TRUE(isNumber) << qPrintable(value);
        EXPECT_FALSE(m_series.contains(name + labels)) << "twice: " << qPrintable(name + labels);
        m_series[name + labels] = value;
    }

    QString m_family;
    QMap<QString, QString> m_types;
    QMap<QString, QString> m_series;
    bool m_hasEnd = false;
};

} // namespace

class OpenMetricsTest : public ::testing::Test
{
protected:
    QByteArray write(Format format)
    {
        QByteArray text;
        OpenMetrics metrics(m_checks.list,
                            {{"cells", "Published cells.", false, 7}, {"rejoins", "Rejoins.", true, 2}},
                            format);
        while (metrics.appendTo(text)) {
        }
        return text;
    }

    void publishSome()
    {
        m_checks.publish({"shop", "web"}, 2, "down");
        m_checks.publishMetric({"shop", "web", "load"}, 1, "85.5");
        m_checks.publishMetric({"shop", "web", "name"}, 0, "no number", "", "", "off");
        m_checks.publish({"shop", "db"}, 0);
    }

    support::PublishedChecks m_checks;
};

TEST_F(OpenMetricsTest, ShowsChecksAndMetrics)
{
    publishSome();
    const MetricsParser parser(write(Format::OpenMetrics));
    const QString web = QStringLiteral("{first=\"shop\",second=\"web\"");
    EXPECT_TRUE(parser.hasEnd());
    EXPECT_EQ(parser.type(QStringLiteral("vigil_check_status")), QStringLiteral("stateset"));
    EXPECT_EQ(parser.value(QStringLiteral("vigil_check_status") + web +
                           QStringLiteral(",vigil_check_status=\"critical\"}")),
              QStringLiteral("1"));
    EXPECT_EQ(parser.value(QStringLiteral("vigil_check_status") + web +
                           QStringLiteral(",vigil_check_status=\"ok\"}")),
              QStringLiteral("0"));
    EXPECT_EQ(parser.value(QStringLiteral("vigil_check_severity") + web + QLatin1Char('}')),
              QStringLiteral("3"));
    EXPECT_EQ(parser.value(QStringLiteral("vigil_check_updates_total") + web + QLatin1Char('}')),
              QStringLiteral("1"));
    const QString load = web + QStringLiteral(",metric=\"load\"");
    EXPECT_EQ(parser.value(QStringLiteral("vigil_metric_value") + load + QLatin1Char('}')),
              QStringLiteral("85.5"));
    EXPECT_EQ(parser.value(QStringLiteral("vigil_metric_bound") + load +
                           QStringLiteral(",range=\"critical\",bound=\"lower\"}")),
              QStringLiteral("10"));
    EXPECT_EQ(parser.value(QStringLiteral("vigil_metric_range_inverse") + load +
                           QStringLiteral(",range=\"critical\"}")),
              QStringLiteral("1"));
    EXPECT_EQ(parser.value(QStringLiteral("vigil_metric_info") + load + QStringLiteral(",unit=\"%\"}")),
              QStringLiteral("1"));
    EXPECT_EQ(parser.value(QStringLiteral("vigil_metric_value") + web + QStringLiteral(",metric=\"name\"}")),
              QStringLiteral("missing"));
    EXPECT_EQ(parser.value(QStringLiteral("vigil_agent_cells")), QStringLiteral("7"));
    EXPECT_EQ(parser.value(QStringLiteral("vigil_agent_rejoins_total")), QStringLiteral("2"));
}

TEST_F(OpenMetricsTest, AMuteChangesAValueAndNoLabel)
{
    publishSome();
    const QString series = QStringLiteral("vigil_check_muted{first=\"shop\",second=\"web\"}");
    EXPECT_EQ(MetricsParser(write(Format::OpenMetrics)).value(series), QStringLiteral("0"));
    EXPECT_FALSE(m_checks.mutes.mute(support::PublishedChecks::indexOf({"shop", "web"}), 1000));
    EXPECT_EQ(MetricsParser(write(Format::OpenMetrics)).value(series), QStringLiteral("1"));
}

TEST_F(OpenMetricsTest, BothFormatsHaveTheSameSeries)
{
    publishSome();
    const MetricsParser current(write(Format::OpenMetrics));
    const MetricsParser old(write(Format::PrometheusText));
    EXPECT_EQ(current.size(), old.size());
    EXPECT_FALSE(old.hasEnd());
    EXPECT_EQ(old.type(QStringLiteral("vigil_check_updates_total")), QStringLiteral("counter"));
    EXPECT_EQ(old.type(QStringLiteral("vigil_check_status")), QStringLiteral("gauge"));
}

TEST_F(OpenMetricsTest, NoLabelChangesWithAValue)
{
    publishSome();
    static const QRegularExpression values(QStringLiteral("\\S+\n"));
    const QString before = QString::fromUtf8(write(Format::OpenMetrics)).remove(values);
    m_checks.clock.advance(5000);
    m_checks.publish({"shop", "web"}, 0, "up again");
    m_checks.publishMetric({"shop", "web", "load"}, 0, "12");
    EXPECT_EQ(QString::fromUtf8(write(Format::OpenMetrics)).remove(values), before);
}

TEST_F(OpenMetricsTest, HostileKeysMakeNoForeignSeries)
{
    for (const std::string& key : {std::string("a\"} 1\nvigil_check_severity{first=\"b"), std::string("\xff"),
                                   std::string("\xfe"), std::string("\\"), std::string("\n"), std::string(),
                                   std::string("\0", 1), std::string("# EOF\n")}) {
        m_checks.publish({key, key}, 2, key);
        m_checks.publishMetric({key, key, key}, 2, "1", key, key, key);
    }
    const MetricsParser parser(write(Format::OpenMetrics));
    EXPECT_TRUE(parser.hasEnd());
    // 4 + 5 series for each check, 6 + 1 for its metric, 3 of the agent
    EXPECT_EQ(parser.size(), 8 * (9 + 7) + 3);
}

TEST_F(OpenMetricsTest, TheReaderChoosesTheFormat)
{
    EXPECT_EQ(OpenMetrics::formatFor("application/openmetrics-text;version=1.0.0,text/plain;q=0.5"),
              Format::OpenMetrics);
    EXPECT_EQ(OpenMetrics::formatFor("text/html"), Format::PrometheusText);
    EXPECT_EQ(OpenMetrics::formatFor(""), Format::PrometheusText);
}
