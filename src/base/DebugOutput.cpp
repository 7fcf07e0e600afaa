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

const QLoggingCategory& connectionCategory()
{
    static const QLoggingCategory category("vigil.connection");
    return category;
}

const QLoggingCategory& logCategory()
{
    static const QLoggingCategory category("vigil.log");
    return category;
}

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

DebugOutput::DebugOutput(const QLoggingCategory& (*wanted)(), QtMsgType type)
{
    ++linesInProgress; // before the look at isClosed, unlike closeDebugOutput()
    if (!isClosed && !platform::isForkedChild() && wanted().isEnabled(type))
        m_category = &wanted();
}

DebugOutput::~DebugOutput()
{
    --linesInProgress;
}

void writeDebug(const QLoggingCategory& (*category)(), const char* text)
{
    const DebugOutput output(category);
    if (output.category())
        QMessageLogger(nullptr, 0, nullptr, output.category()->categoryName()).debug("%s", text);
}

void writeWarning(const QLoggingCategory& (*category)(), const QString& text)
{
    const DebugOutput output(category, QtWarningMsg);
    if (output.category())
        QMessageLogger(nullptr, 0, nullptr, output.category()->categoryName())
            .warning("%s", qUtf8Printable(text));
}

void prepareDebugOutput()
{
    connectionCategory();
    logCategory();
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
