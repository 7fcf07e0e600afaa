// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_APPLICATIONPROCESS_H
#define VIGIL_SUPPORT_APPLICATIONPROCESS_H

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace support {

/// Runs a real application, with the library's client, in a separate process.
///
/// Purpose: it publishes the health check "test"."application" with a metric "value", and can be killed.
///
/// Threads: one with an event loop. Failure: start(), stop() and kill() return false.
class ApplicationProcess
{
public:
    /// The application connects to the agent at this port.
    explicit ApplicationProcess(quint16 agentPort);
    ~ApplicationProcess();

    bool start();
    void publish(int value);

    /// Shuts it down cleanly, so it withdraws its cells.
    bool stop();
    bool kill();

    /// The name in VIGIL-MIB of the metric's value.
    static QString valueName();

private:
    const QTemporaryDir m_logDirectory;
    QProcess m_process;
};

} // namespace support

#endif
