// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CHECKS_CHECKLIST_H
#define VIGIL_AGENT_CHECKS_CHECKLIST_H

#include <QDateTime>
#include <QObject>

#include <array>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "agent/cells/ServedCells.h"
#include "agent/checks/Check.h"
#include "agent/checks/Mutes.h"
#include "agent/checks/RowNumbers.h"
#include "agent/core/Clock.h"

namespace agent {

/// All health checks of the host and their metrics, for the views of them: the agent's MIB, the page.
///
/// Counts are always up to date. A check or metric is put together from the cells when it is asked for, so
/// an update of an application costs one look-up here, and a question costs a few, however many cells there
/// are:
///
///     for (auto check = list.next(0); check; check = list.next(check->number))
///         for (const Metric& metric : list.metricsOf(check->number))
///             ...
///
/// To follow changes, connect changed() and removed() and note the numbers; read the noted checks later, from
/// a timer. Do not read in the slot: an update writes the status first, then the summary and the results,
/// and a busy application updates thousands of times a second. Or compare revision() with its last value.
///
/// Ownership: cells, mutes and clock must outlive the list.
class CheckList : public QObject
{
    Q_OBJECT

public:
    /// The number of a check, then that of a metric; also the order of the metrics.
    using MetricKey = std::pair<unsigned int, unsigned int>;

    CheckList(const ServedCells& cells, const Mutes& mutes, const Clock& clock);

    /// Nothing if there is no such check.
    std::optional<Check> find(unsigned int number) const;

    /// The first check with a larger number, or nothing; 0 for the very first.
    std::optional<Check> next(unsigned int number) const;

    std::optional<unsigned int> numberAfter(unsigned int number) const;

    /// As above. A metric is listed from its first result on, even if its check has no status.
    std::optional<Metric> findMetric(const MetricKey& key) const;
    std::optional<Metric> nextMetric(const MetricKey& key) const;
    std::optional<MetricKey> metricAfter(const MetricKey& key) const;

    std::vector<Metric> metricsOf(unsigned int check) const;

    /// The last value of a metric as text, and its owner, without the cost of everything else.
    struct Sample
    {
        std::string value; ///< empty for a metric without a number
        ApplicationId application = 0;
    };
    Sample sampleOf(const MetricKey& key) const;

    /// The number of all checks, and of those with this status.
    size_t size() const { return m_byNumber.size(); }
    size_t count(int status) const { return m_counts.at(static_cast<size_t>(status)); }
    size_t metricCount() const { return m_metrics.size(); }

    /// UNKNOWN without any check: nothing is known of the host's health.
    int worstStatus() const;
    int worstSeverity() const { return status::severityOf(worstStatus()); }

    /// UTC; when a check last appeared, disappeared or changed its status. Null before.
    QDateTime lastChange() const { return m_lastChange; }

    /// Grows whenever a check is updated, covered, muted or removed, and when a metric appears or disappears.
    quint64 revision() const { return m_revision; }

signals:
    /// A check has appeared, was updated or muted, or reads another status.
    void changed(unsigned int number);

    void removed(unsigned int number);

private:
    /// A check with a status cell, or with metrics.
    struct Entry
    {
        unsigned int number = 0;
        bool isListed = false; // has a status cell
        size_t metrics = 0;
        int status = status::unknown;
        QDateTime since;
        QDateTime lastUpdate;
        qint64 lastUpdateMs = 0;
        quint64 updates = 0;
    };
    using Entries = std::map<ObjectId, Entry>;

    void handleStatusWritten(const ObjectId& check, int status);
    void handleSummaryWritten(const ObjectId& check);
    void handleServed(const ObjectId& check);
    void handleRemoved(const ObjectId& check);
    void reportIfListed(const ObjectId& check);
    void handleResultAdded(const ObjectId& metric);
    void handleResultRemoved(const ObjectId& metric);

    Entries::value_type& entryOf(const ObjectId& check);
    bool isUsed(unsigned int number) const;
    void setStatus(Entries::value_type& check, int status);
    void unlist(Entry& entry);
    void dropIfEmpty(Entries::iterator entry);
    void report(const Entry& entry);

    Check describe(const Entries::value_type& check) const;
    Metric describe(const MetricKey& key, const ObjectId& metric) const;
    int servedStatus(const ObjectId& check) const;
    std::string text(const ObjectId& cell, size_t maxBytes) const;

    const CellStore& m_store;
    const Mutes& m_mutes;
    const Clock& m_clock;
    Entries m_checks;
    const Entries::value_type* m_latest = nullptr; // the check whose status was written last, while listed
    std::map<unsigned int, const Entries::value_type*> m_byNumber; // the listed checks
    std::map<ObjectId, MetricKey> m_metricKeys;
    std::map<MetricKey, const ObjectId*> m_metrics; // points to the keys of m_metricKeys
    RowNumbers m_checkNumbers;
    RowNumbers m_metricNumbers;
    std::array<size_t, status::count> m_counts = {};
    QDateTime m_lastChange;
    quint64 m_revision = 0;
};

} // namespace agent

#endif
