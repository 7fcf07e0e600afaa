// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/serving/SetCoordinator.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "agent/cells/VigilTables.h"
#include "agent/core/Log.h"
#include "agent/netsnmp/NetSnmp.h"

namespace agent {

namespace {

// Time for an application that ends with its answer to close its connection. A SET of one application waits
// less: there is no other one that could be left changed, and managers send the next SET at once.
constexpr qint64 settleMs = 20;
constexpr qint64 settleOfOneMs = 1;

constexpr qint64 unresponsiveMs = 5'000;

bool isOfOne(const SetTransaction& set)
{
    const std::vector<SetTransaction::Question>& questions = set.questions();
    return std::all_of(questions.begin(), questions.end(), [&](const SetTransaction::Question& question) {
        return question.owner == questions.front().owner;
    });
}

/// Applications answer with SNMP error statuses. 1 (tooBig) is their "no" without a reason.
int statusForManager(int answered)
{
    constexpr int refused = SNMP_ERR_TOOBIG;
    if (answered == refused)
        return SNMP_ERR_WRONGVALUE;
    const bool isStatus = answered >= SNMP_ERR_NOERROR && answered <= SNMP_ERR_INCONSISTENTNAME;
    return isStatus ? answered : SNMP_ERR_GENERR;
}

} // namespace

SetCoordinator::SetCoordinator(CellStore& store, CellOwners& owners, Clock& clock, int timeoutMs)
    : m_store(store),
      m_owners(owners),
      m_timeoutMs(timeoutMs),
      m_undecided(clock, timeoutMs, [this](Key key, qint64) { handleTimeout(key); }),
      m_unresponsive(clock, unresponsiveMs, [](ApplicationId, qint64) {}),
      m_settling(clock, [this](Key key, qint64) { handleSettled(key); })
{}

int SetCoordinator::check(const SetVarbind& varbind) const
{
    const Cell* cell = m_store.find(varbind.id);
    if (!cell)
        return SNMP_ERR_NOCREATION;
    const vigilTables::Column* column = vigilTables::columnOf(varbind.id);
    if (column && !column->isWritable)
        return SNMP_ERR_NOTWRITABLE;
    if (!m_owners.isConnected(cell->owner) || m_unresponsive.contains(cell->owner))
        return SNMP_ERR_RESOURCEUNAVAILABLE;
    if (cell->value.index() != varbind.value.index())
        return SNMP_ERR_WRONGTYPE;
    const std::string* text = std::get_if<std::string>(&varbind.value);
    if (column && !vigilTables::isInRange(*column, varbind.value))
        return text ? SNMP_ERR_WRONGLENGTH : SNMP_ERR_WRONGVALUE;
    const bool isCutOnTheWire = text && text->find('\0') != std::string::npos;
    return isCutOnTheWire ? SNMP_ERR_WRONGVALUE : SNMP_ERR_NOERROR;
}

bool SetCoordinator::isUnresponsive(const ObjectId& cell) const
{
    const Cell* found = m_store.find(cell);
    return found && m_unresponsive.contains(found->owner);
}

SetCoordinator::Key SetCoordinator::begin(std::vector<SetVarbind> varbinds)
{
    const Key key = ++m_lastKey;
    std::vector<SetTransaction::Question> questions;
    for (SetVarbind& varbind : varbinds) {
        const Cell* cell = m_store.find(varbind.id);
        const ApplicationId owner = cell ? cell->owner : 0;
        questions.push_back({std::move(varbind), owner, nextNumber()});
    }
    const SetTransaction& set = m_sets.try_emplace(key, std::move(questions)).first->second;
    ++m_counts.forwarded;
    for (const SetTransaction::Question& question : set.questions())
        m_owners.ask(question.owner, question.number, question.varbind.id, question.varbind.value);
    m_undecided.restart(key);
    return key;
}

bool SetCoordinator::isStillValid(Key key) const
{
    const auto position = m_sets.find(key);
    if (position == m_sets.end())
        return false;
    const std::vector<SetTransaction::Question>& questions = position->second.questions();
    return std::all_of(questions.begin(), questions.end(), [this](const SetTransaction::Question& question) {
        const Cell* cell = m_store.find(question.varbind.id);
        return cell && cell->owner == question.owner && m_owners.isConnected(question.owner);
    });
}

bool SetCoordinator::commit(Key key)
{
    const bool isValid = isStillValid(key);
    const auto position = m_sets.find(key);
    if (position == m_sets.end() || !position->second.commit())
        return false;
    const auto node = m_sets.extract(position);
    const std::vector<SetTransaction::Question>& questions = node.mapped().questions();
    if (!isValid) {
        log::warning(QStringLiteral("a SET of %1 and %2 other objects has no effect: an application was lost "
                                    "after it had accepted. Behind snmpd the manager does not hear of this")
                         .arg(toText(questions.front().varbind.id))
                         .arg(questions.size() - 1));
        return false;
    }
    for (const SetTransaction::Question& question : questions) {
        const SetVarbind& varbind = question.varbind;
        m_store.commit(varbind.id, varbind.value);
        m_owners.commit(question.owner, varbind.id, varbind.value);
    }
    return true;
}

void SetCoordinator::drop(Key key)
{
    m_undecided.remove(key);
    m_settling.remove(key);
    m_sets.erase(key);
}

void SetCoordinator::handleAnswer(ApplicationId owner, int number, int errorStatus)
{
    m_unresponsive.remove(owner); // even a late answer shows that it is back
    const auto position = std::find_if(m_sets.begin(), m_sets.end(), [&](const auto& entry) {
        return entry.second.isAwaiting(owner, number);
    });
    if (position == m_sets.end()) {
        log::detail([&] { return QStringLiteral("answer %1 came too late and is dropped").arg(number); });
        return;
    }
    auto& [key, set] = *position;
    if (!set.handleAnswer(owner, number, statusForManager(errorStatus)))
        return;
    if (set.state() == SetTransaction::Settling)
        return m_settling.restart(key, isOfOne(set) ? settleOfOneMs : settleMs);
    ++m_counts.refused;
    announce(key);
}

void SetCoordinator::handleSettled(Key key)
{
    const auto position = m_sets.find(key);
    if (position != m_sets.end() && position->second.handleSettled())
        announce(key);
}

void SetCoordinator::handleLost(ApplicationId owner)
{
    m_unresponsive.remove(owner);
    std::vector<Key> refused; // slots of decided() may add and remove SETs
    for (auto& [key, set] : m_sets) {
        if (set.handleLost(owner))
            refused.push_back(key);
    }
    for (const Key key : refused)
        announce(key);
}

void SetCoordinator::handleTimeout(Key key)
{
    const auto position = m_sets.find(key);
    if (position == m_sets.end() || !position->second.handleTimeout())
        return;
    ++m_counts.timedOut;
    for (const SetTransaction::Question& question : position->second.questions()) {
        if (!question.isAccepted)
            m_unresponsive.restart(question.owner);
    }
    warnOfTimeout(position->second);
    announce(key);
}

void SetCoordinator::warnOfTimeout(const SetTransaction& set) const
{
    const SetTransaction::Question& open = set.questions()[static_cast<size_t>(set.decision().index)];
    log::warning(QStringLiteral("%1 has not answered a SET of %2 within %3 ms; the manager is told "
                                "resourceUnavailable. Until the application answers, further SETs fail at "
                                "once, for %4 seconds at most")
                     .arg(m_owners.nameOf(open.owner), toText(open.varbind.id))
                     .arg(m_timeoutMs)
                     .arg(unresponsiveMs / 1000));
}

int SetCoordinator::nextNumber()
{
    m_lastNumber = m_lastNumber == std::numeric_limits<int>::max() ? 1 : m_lastNumber + 1;
    return m_lastNumber;
}

void SetCoordinator::announce(Key key)
{
    const auto position = m_sets.find(key);
    if (position == m_sets.end())
        return;
    m_undecided.remove(key);
    m_settling.remove(key);
    const SetTransaction::Decision decision = position->second.decision();
    emit decided(key, decision.index, decision.errorStatus);
}

} // namespace agent
