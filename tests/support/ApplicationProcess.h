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
/// Purpose: it publishes the health check "test".NAME with a metric "value", and can be killed.
///
/// Threads: one with an event loop. Failure: start(), stop() and kill() return false.
class ApplicationProcess
{
public:
    /// The application connects to the agent at this port.
    explicit ApplicationProcess(quint16 agentPort, const QString& name = QStringLiteral("application"));
    ~ApplicationProcess();

    bool start();
    void publish(int value);

    /// Shuts it down cleanly, so it withdraws its cells.
    bool stop();
    bool kill();

    qint64 processId() const { return m_process.processId(); }

    /// The name in VIGIL-MIB of the metric's value, of an application without a name of its own.
    static QString valueName();

private:
    const QString m_name;
    const QTemporaryDir m_logDirectory;
    QProcess m_process;
};

} // namespace support

#endif
