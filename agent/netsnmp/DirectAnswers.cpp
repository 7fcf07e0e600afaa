// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/DirectAnswers.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <set>
#include <utility>

#include <poll.h>

#include "agent/netsnmp/AgentxFacts.h"
#include "agent/netsnmp/MasterStream.h"

// Parts of the agent library; no installed header declares them.
extern "C" {
int handle_pdu(netsnmp_agent_session*);
extern netsnmp_session* agentx_callback_sess;
extern netsnmp_session* callback_master_sess;
extern netsnmp_agent_session* agent_delegated_list;
}

namespace agent {

namespace {

struct FreeRequest
{
    void operator()(netsnmp_agent_session* request) const { free_agent_snmp_session(request); }
};

using Request = std::unique_ptr<netsnmp_agent_session, FreeRequest>;

netsnmp_callback netSnmpsWay; // how Net-SNMP handles a message of the session
bool isPipeUsed = false;      // since it was last seen empty
std::optional<long> lastStep; // of a SET, by its packet
std::set<long> openSets;      // by their transactions
std::set<long> endedSets;     // their last steps may still be in the pipe

bool isPipeEmpty()
{
    const auto descriptorOf = [](netsnmp_session* end) {
        return snmp_sess_transport(snmp_sess_pointer(end))->sock;
    };
    std::array<pollfd, 2> ends = {pollfd{descriptorOf(agentx_callback_sess), POLLIN, 0},
                                  pollfd{descriptorOf(callback_master_sess), POLLIN, 0}};
    return poll(ends.data(), ends.size(), 0) == 0;
}

bool canAnswer(const netsnmp_pdu& message)
{
    return (message.command == agentx::Get || message.command == agentx::GetNext) && !isPipeBusy();
}

bool isStep(const netsnmp_pdu& message)
{
    return message.command >= agentx::TestSet && message.command <= agentx::CleanupSet;
}

bool isRepeated(const netsnmp_pdu& step)
{
    return step.reqid == lastStep;
}

/// False for a second start of the same SET, a step without a start, or one that does not wait for the answer
/// to the step before. Net-SNMP would read freed memory.
bool isInOrder(const netsnmp_pdu& step)
{
    const bool isOpen = openSets.count(step.transid) > 0;
    return step.command == agentx::TestSet ? !isOpen : isOpen && !isPipeBusy();
}

void noteStep(const netsnmp_pdu& step)
{
    lastStep = step.reqid;
    if (step.command == agentx::TestSet)
        openSets.insert(step.transid);
    else if (step.command != agentx::CommitSet)
        endedSets.insert(step.transid);
}

void forgetEndedSets()
{
    for (const long ended : std::exchange(endedSets, {}))
        openSets.erase(ended);
}

/// snmpd asks up to an end, which another subagent may have registered. No end is the identifier 0.0.
bool isBeyond(const netsnmp_variable_list& found, const netsnmp_variable_list& asked)
{
    const size_t endLength = asked.val_len / sizeof(oid);
    const bool isUnlimited =
        std::all_of(asked.val.objid, asked.val.objid + endLength, [](oid arc) { return arc == 0; });
    return !isUnlimited && snmp_oid_compare(found.name, found.name_length, asked.val.objid, endLength) >= 0;
}

/// Puts the end of the view where nothing was found in the range, as RFC 2741 wants it.
void markEnds(netsnmp_variable_list* found, const netsnmp_variable_list* asked)
{
    for (; found && asked; found = found->next_variable, asked = asked->next_variable) {
        if (found->type != SNMP_ENDOFMIBVIEW && !isBeyond(*found, *asked))
            continue;
        snmp_set_var_objid(found, asked->name, asked->name_length);
        snmp_set_var_typed_value(found, SNMP_ENDOFMIBVIEW, nullptr, 0);
    }
}

void removeVarbinds(netsnmp_pdu& answer)
{
    snmp_free_varbind(std::exchange(answer.variables, nullptr));
}

/// The answer to a request that has been handled.
netsnmp_pdu* takeAnswer(netsnmp_agent_session& request)
{
    netsnmp_pdu* answer = std::exchange(request.pdu, nullptr);
    answer->errstat = request.status;
    answer->errindex = request.index;
    if (request.status != SNMP_ERR_NOERROR)
        removeVarbinds(*answer);
    else if (answer->command == SNMP_MSG_GETNEXT)
        markEnds(answer->variables, request.orig_pdu->variables);
    answer->command = agentx::Response;
    return answer;
}

void answerMessage(netsnmp_session& session, netsnmp_pdu& message)
{
    message.command = message.command == agentx::Get ? SNMP_MSG_GET : SNMP_MSG_GETNEXT;
    message.flags |= UCD_MSG_FLAG_ALWAYS_IN_VIEW; // snmpd has checked the access
    const Request request(init_agent_snmp_session(&session, &message));
    if (!request)
        return;
    const int status = handle_pdu(request.get());
    if (request->status == SNMP_ERR_NOERROR)
        request->status = status;
    netsnmp_pdu* answer = takeAnswer(*request);
    if (snmp_send(&session, answer) == 0)
        snmp_free_pdu(answer);
}

/// False if Net-SNMP must not see the step.
bool takeStep(netsnmp_session& session, const netsnmp_pdu& step)
{
    if (isRepeated(step))
        return false;
    if (!isPipeBusy())
        forgetEndedSets();
    if (!isInOrder(step)) {
        shutDownStream(*snmp_sess_transport(snmp_sess_pointer(&session)));
        return false;
    }
    noteStep(step);
    return true;
}

int handleOperation(int operation, netsnmp_session* session, int request, netsnmp_pdu* message, void* magic)
{
    constexpr int done = 1;
    if (operation == NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE) {
        if (canAnswer(*message)) {
            answerMessage(*session, *message);
            return done;
        }
        if (isStep(*message) && !takeStep(*session, *message))
            return done;
        isPipeUsed = true;
    }
    return netSnmpsWay(operation, session, request, message, magic);
}

} // namespace

bool isPipeBusy()
{
    isPipeUsed = isPipeUsed && (agent_delegated_list || !isPipeEmpty());
    return isPipeUsed;
}

void answerDirectly(netsnmp_session& session)
{
    netSnmpsWay = std::exchange(session.callback, &handleOperation);
    lastStep.reset();
    openSets.clear();
    endedSets.clear();
}

} // namespace agent
