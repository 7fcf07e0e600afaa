// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/StateKeeper.h"

#include <QCryptographicHash>

#include <set>
#include <utility>
#include <vector>

#include "agent/core/Log.h"

namespace agent {

namespace {

constexpr qint64 delayMs = 1'000;
constexpr qint64 retryMs = 5'000;

/// Takes far less memory than the lines.
QByteArray fingerprintOf(const QStringList& lines)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const QString& line : lines)
        hash.addData((line + QLatin1Char('\n')).toUtf8());
    return hash.result();
}

} // namespace

StateKeeper::StateKeeper(const ServedCells& cells, ApplicationServer& applications,
                         Notifications& notifications, Mutes& mutes, Clock& clock, const QString& path)
    : m_cells(cells),
      m_applications(applications),
      m_notifications(notifications),
      m_mutes(mutes),
      m_file(path, QStringLiteral("state")),
      m_isOn(!path.isEmpty()),
      m_delay(clock, [this] { save(); })
{}

void StateKeeper::restore(qint64 forgetMs)
{
    if (!m_isOn)
        return;
    SavedState state;
    QStringList lines;
    if (const Error error = m_file.read(lines))
        log::warning(error.text());
    const SavedState::Wrong wrong = state.readLines(lines);
    if (wrong.lines > 0)
        log::warning(m_file.partlyDamaged(wrong.lines, wrong.first).text());
    m_mutes.restore(state.mutes);
    m_notifications.restore(state.notified, forgetMs);
    m_notifications.restoreForgotten(state.forgotten);
    for (const SavedApplication& application : state.applications)
        m_applications.restore(application);
    m_saved = fingerprintOf(lines);
    connect(&m_applications, &ApplicationServer::lost, this, &StateKeeper::saveSoon);
    connect(&m_cells, &ServedCells::applicationGone, this, &StateKeeper::saveSoon);
    connect(&m_cells, &ServedCells::checkCovered, this, &StateKeeper::saveSoon);
    connect(&m_cells, &ServedCells::checkRemoved, this, &StateKeeper::saveSoon);
    connect(&m_notifications, &Notifications::healthChanged, this, &StateKeeper::saveSoon);
    connect(&m_mutes, &Mutes::changed, this, &StateKeeper::saveSoon);
    saveSoon(); // some may have been forgotten
}

void StateKeeper::saveSoon()
{
    if (!m_delay.isActive())
        m_delay.startOnce(delayMs);
}

void StateKeeper::save()
{
    if (!m_isOn)
        return;
    m_delay.stop();
    const QStringList lines = current().toLines();
    const QByteArray fingerprint = fingerprintOf(lines);
    if (fingerprint == m_saved)
        return;
    const Error error = m_file.write(lines);
    if (!error) {
        m_saved = fingerprint;
    } else {
        m_delay.startOnce(retryMs); // there may be room again
        if (!m_isWarned)
            log::warning(error.text());
    }
    m_isWarned = static_cast<bool>(error);
}

/// A check managers know as OK needs no line: it would be treated the same without one. If they know
/// another status, its application may never return to correct it.
SavedState StateKeeper::current() const
{
    SavedState state;
    state.mutes = m_mutes.all();
    state.forgotten = m_notifications.forgotten();
    state.applications = m_applications.lostApplications();
    std::set<ObjectId> lostChecks;
    for (const SavedApplication& application : state.applications) {
        for (const LostCheck& check : application.checks)
            lostChecks.insert(check.check);
    }
    for (const LostCheck& check : state.forgotten)
        lostChecks.insert(check.check);
    std::vector<ObjectId> notOk;
    for (const auto& [check, status] : m_notifications.notified()) {
        const bool isLost = lostChecks.count(check) > 0;
        if (status != 0 || isLost)
            state.notified[check] = status;
        if (status != 0 && !isLost)
            notOk.push_back(check);
    }
    for (SavedApplication& owner : m_applications.ownersOf(notOk))
        state.applications.push_back(std::move(owner));
    return state;
}

} // namespace agent
