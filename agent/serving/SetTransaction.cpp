// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/serving/SetTransaction.h"

#include <algorithm>
#include <utility>

#include "agent/netsnmp/NetSnmp.h"

namespace agent {

namespace {

/// The index of the first question to meet the condition, or the number of questions.
template <typename Questions, typename Condition>
size_t findIndex(const Questions& questions, Condition condition)
{
    return static_cast<size_t>(std::find_if(questions.begin(), questions.end(), condition) -
                               questions.begin());
}

} // namespace

SetTransaction::SetTransaction(std::vector<Question> questions) : m_questions(std::move(questions)) {}

bool SetTransaction::isAwaiting(ApplicationId owner, int number) const
{
    return m_state == Asking && indexOfOpen(owner, number) < m_questions.size();
}

bool SetTransaction::handleAnswer(ApplicationId owner, int number, int errorStatus)
{
    const size_t index = indexOfOpen(owner, number);
    if (errorStatus != SNMP_ERR_NOERROR)
        return step(OneRefuses, index, errorStatus);
    m_questions[index].isAccepted = true;
    const bool isLast = std::all_of(m_questions.begin(), m_questions.end(),
                                    [](const Question& each) { return each.isAccepted; });
    return step(isLast ? LastAccepts : OneAccepts, index, SNMP_ERR_NOERROR);
}

bool SetTransaction::handleLost(ApplicationId owner)
{
    const size_t index = findIndex(m_questions, [&](const Question& each) { return each.owner == owner; });
    return index < m_questions.size() && step(OwnerLost, index, SNMP_ERR_RESOURCEUNAVAILABLE);
}

bool SetTransaction::handleTimeout()
{
    const size_t index = findIndex(m_questions, [](const Question& each) { return !each.isAccepted; });
    return step(TimedOut, index, SNMP_ERR_RESOURCEUNAVAILABLE);
}

bool SetTransaction::handleSettled()
{
    return step(Settled, 0, SNMP_ERR_NOERROR);
}

bool SetTransaction::commit()
{
    return step(Commit, 0, SNMP_ERR_NOERROR);
}

size_t SetTransaction::indexOfOpen(ApplicationId owner, int number) const
{
    return findIndex(m_questions, [&](const Question& each) {
        return each.owner == owner && each.number == number && !each.isAccepted;
    });
}

bool SetTransaction::step(Event event, size_t index, int errorStatus)
{
    const State before = std::exchange(m_state, nextState[m_state][event]);
    if (m_state == before)
        return false;
    m_decision = {static_cast<int>(index), errorStatus};
    return true;
}

} // namespace agent
