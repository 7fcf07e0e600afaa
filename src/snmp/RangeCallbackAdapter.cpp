// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/RangeCallbackAdapter.h"

#include <optional>

#include <vigil/Range.h>

#include "base/DebugOutput.h"
#include "base/Printable.h"
#include "snmp/RemoteMetricObserver.h"
#include "snmp/SnmpMetricTable.h"

using vigil::Oid;
using vigil::Range;

namespace {

constexpr unsigned int accepted = 0;
constexpr unsigned int refused = 1;

std::optional<RangeKind> rangeKindOf(const SnmpMetricTable& table, const Oid& cell)
{
    switch (table.columnIndexOrNone(cell)) {
    case SnmpMetricTable::warningRangeIndex:
        return RangeKind::Warning;
    case SnmpMetricTable::criticalRangeIndex:
        return RangeKind::Critical;
    default:
        return std::nullopt;
    }
}

} // namespace

RangeCallbackAdapter::RangeCallbackAdapter(RemoteMetricObserver* observer, SnmpMetricTable* table)
    : m_observer(observer), m_table(table)
{}

unsigned int RangeCallbackAdapter::callbackValidateValue(const Oid& cell, const std::string& text)
{
    Range range;
    if (Range::fromString(text, range) < 0) {
        base::writeDebug(base::tablesCategory, [&](QDebug line) {
            const QByteArray shown = base::printable(QString::fromStdString(text)).toUtf8();
            line << "Invalid range string [" << shown.constData()
                 << "] from remote SNMP manager. Ignore SET request.";
        });
        return refused;
    }
    const std::optional<RangeKind> kind = rangeKindOf(*m_table, cell);
    if (!kind)
        return refused;
    if (m_observer->checkRangeChange(*kind, range))
        return accepted;
    base::writeDebug(base::tablesCategory, [](QDebug line) {
        line << "Client invalidated requested range change. Ignore SET request.\n";
    });
    return refused;
}

void RangeCallbackAdapter::callbackValueChanged(const Oid& cell, std::string text)
{
    Range range;
    if (Range::fromString(text, range) < 0) {
        base::writeDebug(base::tablesCategory, [](QDebug line) {
            line << "RangeCallbackAdapter::callbackValueChanged: Bad range format string.";
        });
        return;
    }
    const std::optional<RangeKind> kind = rangeKindOf(*m_table, cell);
    if (!kind)
        return;
    m_observer->applyRange(*kind, range);
    m_observer->onRangeChanged(*kind);
}
