// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/serving/SetCoordinator.h"

#include <QTimer>

#include <algorithm>
#include <limits>

#include "agent/core/Log.h"
#include "agent/netsnmp/NetSnmp.h"

namespace agent {

namespace {

/// Applications answer with SNMP error statuses; 1 (tooBig) is how they say no without a reason.
int statusForManager(int answered)
{
    constexpr int refused = SNMP_ERR_TOOBIG;
    if (answered == refused)
        return SNMP_ERR_WRONGVALUE;
    const bool isStatus = answered >= SNMP_ERR_NOERROR && answered <= SNMP_ERR_INCONSISTENTNAME;
    return isStatus ? answered : SNMP_ERR_GENERR;
}

} // namespace

SetCoordinator::SetCoordinator(CellStore& store, CellOwners& owners, int timeoutMs)
    : m_store(store), m_owners(owners), m_timeoutMs(timeoutMs)
{}

int SetCoordinator::check(const SetVarbind& varbind) const
{
    const Cell* cell = m_store.find(varbind.id);
    if (!cell)
        return SNMP_ERR_NOCREATION;
    if (!m_owners.isConnected(cell->owner))
        return SNMP_ERR_RESOURCEUNAVAILABLE;
    if (cell->value.index() != varbind.value.index())
        return SNMP_ERR_WRONGTYPE;
    const std::string* text = std::get_if<std::string>(&varbind.value);
    const bool isCutOnTheWire = text && text->find('\0') != std::string::npos;
    return isCutOnTheWire ? SNMP_ERR_WRONGVALUE : SNMP_ERR_NOERROR;
}

SetCoordinator::Key SetCoordinator::begin(std::vector<SetVarbind> varbinds)
{
    const Key key = ++m_lastKey;
    Transaction& transaction = m_transactions[key];
    for (SetVarbind& varbind : varbinds) {
        const Cell* cell = m_store.find(varbind.id);
        const ApplicationId owner = cell ? cell->owner : 0;
        transaction.questions.push_back({std::move(varbind), owner, nextNumber(), false});
    }
    ++m_counts.forwarded;
    for (const Question& question : transaction.questions)
        m_owners.ask(question.owner, question.number, question.varbind.id, question.varbind.value);
    QTimer::singleShot(m_timeoutMs, Qt::PreciseTimer, this, [this, key] { refuseUnanswered(key); });
    return key;
}

bool SetCoordinator::isStillValid(Key key) const
{
    const auto transaction = m_transactions.find(key);
    if (transaction == m_transactions.end())
        return false;
    const std::vector<Question>& questions = transaction->second.questions;
    return std::all_of(questions.begin(), questions.end(), [this](const Question& question) {
        const Cell* cell = m_store.find(question.varbind.id);
        return cell && cell->owner == question.owner;
    });
}

void SetCoordinator::commit(Key key)
{
    const auto node = m_transactions.extract(key);
    if (node.empty())
        return;
    for (const Question& question : node.mapped().questions) {
        const SetVarbind& varbind = question.varbind;
        m_store.changeValue(varbind.id, varbind.value);
        m_owners.commit(question.owner, varbind.id, varbind.value);
    }
}

void SetCoordinator::drop(Key key)
{
    m_transactions.erase(key);
}

void SetCoordinator::handleAnswer(ApplicationId owner, int number, int errorStatus)
{
    for (auto& [key, transaction] : m_transactions) {
        std::vector<Question>& questions = transaction.questions;
        const auto question =
            std::find_if(questions.begin(), questions.end(), [&](const Question& candidate) {
                return candidate.number == number && candidate.owner == owner && !candidate.isAnswered;
            });
        if (question == questions.end() || transaction.isDecided)
            continue;
        question->isAnswered = true;
        if (errorStatus != SNMP_ERR_NOERROR)
            ++m_counts.refused;
        const bool isLast = std::all_of(questions.begin(), questions.end(),
                                        [](const Question& each) { return each.isAnswered; });
        if (errorStatus != SNMP_ERR_NOERROR || isLast)
            decide(key, static_cast<int>(question - questions.begin()), statusForManager(errorStatus));
        return;
    }
    log::detail([&] { return QStringLiteral("answer %1 came too late and is dropped").arg(number); });
}

void SetCoordinator::handleLost(ApplicationId owner)
{
    std::vector<Key> affected;
    for (const auto& [key, transaction] : m_transactions) {
        const bool asks = std::any_of(transaction.questions.begin(), transaction.questions.end(),
                                      [&](const Question& question) { return question.owner == owner; });
        if (asks)
            affected.push_back(key);
    }
    for (const Key key : affected) {
        const auto transaction = m_transactions.find(key); // deciding one may end another
        if (transaction == m_transactions.end())
            continue;
        const std::vector<Question>& questions = transaction->second.questions;
        const auto lost = std::find_if(questions.begin(), questions.end(),
                                       [&](const Question& question) { return question.owner == owner; });
        decide(key, static_cast<int>(lost - questions.begin()), SNMP_ERR_RESOURCEUNAVAILABLE);
    }
}

int SetCoordinator::nextNumber()
{
    m_lastNumber = m_lastNumber == std::numeric_limits<int>::max() ? 1 : m_lastNumber + 1;
    return m_lastNumber;
}

void SetCoordinator::decide(Key key, int index, int errorStatus)
{
    const auto transaction = m_transactions.find(key);
    if (transaction == m_transactions.end() || transaction->second.isDecided)
        return;
    transaction->second.isDecided = true;
    emit decided(key, index, errorStatus);
}

void SetCoordinator::refuseUnanswered(Key key)
{
    const auto transaction = m_transactions.find(key);
    if (transaction == m_transactions.end() || transaction->second.isDecided)
        return;
    const std::vector<Question>& questions = transaction->second.questions;
    ++m_counts.timedOut;
    const auto open = std::find_if(questions.begin(), questions.end(),
                                   [](const Question& question) { return !question.isAnswered; });
    log::warning(
        QStringLiteral("application %1 has not answered a SET of %2 within %3 ms; the manager is told "
                       "resourceUnavailable")
            .arg(open->owner)
            .arg(toText(open->varbind.id))
            .arg(m_timeoutMs));
    decide(key, static_cast<int>(open - questions.begin()), SNMP_ERR_RESOURCEUNAVAILABLE);
}

} // namespace agent
