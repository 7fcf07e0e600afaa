// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/DebugOutput.h"

#include <QString>

#include <atomic>

#include "platform/Platform.h"

namespace base {

namespace {

constexpr int closeTimeoutMs = 1000;

std::atomic<int> linesInProgress{0};
std::atomic<bool> isClosed{false};

} // namespace

const QLoggingCategory& metricsCategory()
{
    static const QLoggingCategory category("vigil.metrics");
    return category;
}

const QLoggingCategory& tablesCategory()
{
    static const QLoggingCategory category("vigil.tables");
    return category;
}

DebugOutput::DebugOutput(const QLoggingCategory& (*wanted)())
{
    ++linesInProgress; // before the look at isClosed, unlike closeDebugOutput()
    if (!isClosed && !platform::isForkedChild() && wanted().isDebugEnabled())
        m_category = &wanted();
}

DebugOutput::~DebugOutput()
{
    --linesInProgress;
}

void prepareDebugOutput()
{
    metricsCategory();
    tablesCategory();
    static_cast<void>(qFormatLogMessage(QtDebugMsg, QMessageLogContext(), QString()));
    static_cast<void>(QString(QLatin1Char('x')).toLocal8Bit());
}

void closeDebugOutput()
{
    isClosed = true;
    for (int waited = 0; linesInProgress > 0 && waited < closeTimeoutMs; ++waited)
        platform::sleepMs(1);
}

} // namespace base
