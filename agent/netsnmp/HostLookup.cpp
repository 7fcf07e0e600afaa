// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/HostLookup.h"

#include <QCoreApplication>
#include <QPointer>
#include <QRegularExpression>

#include <utility>

#include "agent/core/Log.h"

namespace agent {

namespace {

int openQuestions = 0; // to the system

} // namespace

std::optional<NamedAddress> NamedAddress::of(const QString& text)
{
    static const QRegularExpression form(QStringLiteral(
        "^((?:(?:tcp|udp)6?:)?)(?!(?:tcp|udp)6?:)([A-Za-z0-9_.-]*[A-Za-z][A-Za-z0-9_.-]*)((?::[0-9]+)?)$"));
    const QRegularExpressionMatch match = form.match(text.trimmed());
    if (!match.hasMatch())
        return std::nullopt;
    return NamedAddress{match.captured(1), match.captured(2), match.captured(3)};
}

bool NamedAddress::isIPv6() const
{
    return transport.endsWith(QLatin1String("6:"));
}

QString NamedAddress::with(const QHostAddress& host) const
{
    const QString text = isIPv6() ? QStringLiteral("[%1]").arg(host.toString()) : host.toString();
    return transport + text + port;
}

HostLookup::HostLookup(const NamedAddress& address, Clock& clock, Found found, LookUp lookUp)
    : m_address(address), m_clock(clock), m_found(std::move(found)), m_lookUp(std::move(lookUp))
{}

void HostLookup::start()
{
    if (!std::exchange(m_isRunning, true))
        attempt();
}

void HostLookup::attempt()
{
    const quint64 attempt = ++m_attempt;
    m_lookUp(m_address.name, this, [this, attempt](const QHostInfo& info) { handleAnswer(attempt, info); });
    m_clock.callAfter(limitMs, this, [this, attempt] { retry(attempt); });
}

void HostLookup::handleAnswer(quint64 attempt, const QHostInfo& info)
{
    if (attempt != m_attempt || !m_isRunning)
        return;
    const auto protocol = m_address.isIPv6() ? QAbstractSocket::IPv6Protocol : QAbstractSocket::IPv4Protocol;
    for (const QHostAddress& host : info.addresses()) {
        if (host.protocol() != protocol)
            continue;
        m_isRunning = false;
        m_isWarned = false;
        return m_found(m_address.with(host));
    }
    m_clock.callAfter(retryMs, this, [this, attempt] { retry(attempt); });
}

void HostLookup::retry(quint64 attempt)
{
    if (attempt != m_attempt || !m_isRunning)
        return;
    if (!std::exchange(m_isWarned, true))
        log::warning(QStringLiteral("the address of the host %1 cannot be found yet; the agent keeps looking")
                         .arg(m_address.name));
    this->attempt();
}

bool HostLookup::isSystemBusy()
{
    return openQuestions > 0;
}

/// The answer comes even if the context is gone; it then only counts.
void HostLookup::askSystem(const QString& name, QObject* context, Answered answered)
{
    ++openQuestions;
    QHostInfo::lookupHost(name, QCoreApplication::instance(),
                          [context = QPointer<QObject>(context), answered](const QHostInfo& info) {
                              --openQuestions;
                              if (context)
                                  answered(info);
                          });
}

} // namespace agent
