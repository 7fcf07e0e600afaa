// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_HOSTLOOKUP_H
#define VIGIL_AGENT_NETSNMP_HOSTLOOKUP_H

#include <QHostInfo>
#include <QObject>

#include <functional>
#include <optional>

#include "agent/core/Clock.h"

namespace agent {

/// An address in Net-SNMP's notation that has a host's name, such as "tcp:manager.example.com:705".
struct NamedAddress
{
    QString transport; ///< with its colon; can be empty
    QString name;
    QString port; ///< with its colon; can be empty

    /// Nothing if the text needs no look-up: a path, or an address in numbers.
    static std::optional<NamedAddress> of(const QString& text);

    bool isIPv6() const;
    QString with(const QHostAddress& host) const;
};

/// Finds the address of a host outside the event loop. Net-SNMP's own look-up blocks it for up to 20 seconds
/// if the name server is silent.
///
/// Ownership: the clock must outlive it.
/// Failure: tries again 5 seconds after a failure or 10 seconds without an answer, for as long as it lives.
class HostLookup : public QObject
{
    Q_OBJECT

public:
    static constexpr qint64 limitMs = 10'000;
    static constexpr qint64 retryMs = 5'000;

    using Answered = std::function<void(const QHostInfo& info)>;
    using LookUp = std::function<void(const QString& name, QObject* context, Answered answered)>;

    /// Called from the event loop, with the address in numbers.
    using Found = std::function<void(const QString& address)>;

    HostLookup(const NamedAddress& address, Clock& clock, Found found, LookUp lookUp = &askSystem);

    /// Does nothing while a look-up is running.
    void start();

    /// True while the system is looking up a name in a thread of its own. This may take long.
    static bool isSystemBusy();

private:
    static void askSystem(const QString& name, QObject* context, Answered answered);
    void attempt();
    void handleAnswer(quint64 attempt, const QHostInfo& info);
    void retry(quint64 attempt);

    const NamedAddress m_address;
    Clock& m_clock;
    const Found m_found;
    const LookUp m_lookUp;
    bool m_isRunning = false;
    bool m_isWarned = false;
    quint64 m_attempt = 0; // answers to earlier ones are late
};

} // namespace agent

#endif
