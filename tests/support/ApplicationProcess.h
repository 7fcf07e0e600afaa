// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_APPLICATIONPROCESS_H
#define VIGIL_SUPPORT_APPLICATIONPROCESS_H

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace support {

/// An application in a process of its own, with the library's real client.
///
/// Purpose: it publishes the health check "test"."application" with a metric "value", and can be killed.
///
/// Threads: one with an event loop. Failure: start() and the ways to end it return false.
class ApplicationProcess
{
public:
    /// The application will look for the agent at this port.
    explicit ApplicationProcess(quint16 agentPort);
    ~ApplicationProcess();

    bool start();
    void publish(int value);

    /// Ends it in order, which withdraws what it has published.
    bool stop();
    bool kill();

    /// Where the metric's value is served, by its name in VIGIL-MIB.
    static QString valueName();

private:
    const QTemporaryDir m_logDirectory;
    QProcess m_process;
};

} // namespace support

#endif
