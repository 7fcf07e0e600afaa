# shellcheck shell=bash
# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT
#
# Sourced by the tests that are scripts. Creates $work_dir, which goes at the end with all processes in $pids, and sets up
# the SNMP tools.

source_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
readonly source_dir
readonly long_wait=60 # seconds; beside a full load Wine alone took 15 to start a program

work_dir=$(mktemp -d)
pids=()

clean_up() {
    local pid
    for pid in "${pids[@]}"; do
        kill "$pid" 2>/dev/null || true
        wait "$pid" 2>/dev/null || true
    done
    rm -rf "$work_dir"
}
trap clean_up EXIT

fail() {
    echo "Failed: $*" >&2
    tail -n 30 "$work_dir"/*.log >&2
    exit 1
}

# wait_until EVENT COMMAND...: until the command succeeds.
wait_until() {
    local what=$1 end=$((SECONDS + long_wait))
    shift
    until "$@"; do
        ((SECONDS < end)) || fail "waited in vain for $what"
        sleep 0.1
    done
}

agent_is_ready_or_gone() {
    grep -qs "listening for applications" "$work_dir/agent.log" || ! kill -0 "$1" 2>/dev/null
}

# The port where the agent accepts applications.
application_port() {
    sed -n 's/.*listening for applications on .*:\([0-9]*\).*/\1/p' "$work_dir/agent.log"
}

# start_agent COMMAND...: starts the agent with the addresses added. Sets $port, for managers, and the port of the
# applications. The address of an SNMP service must name a port, so this tries a few.
start_agent() {
    local tries
    for ((tries = 0; tries < 10; ++tries)); do
        port=$((10000 + RANDOM % 22000))
        : >"$work_dir/agent.log" # now: the agent's shell may do it only after the first look for a line of this agent
        "$@" --standalone "udp:127.0.0.1:$port" --listen 127.0.0.1:0 >"$work_dir/agent.log" 2>&1 &
        agent_pid=$!
        wait_until "the agent" agent_is_ready_or_gone "$agent_pid"
        if kill -0 "$agent_pid" 2>/dev/null; then
            pids+=("$agent_pid")
            VIGIL_SERVICE_PORT=$(application_port)
            export VIGIL_SERVICE_PORT VIGIL_LOG_DIR="Z:$work_dir/log"
            return
        fi
    done
    fail "vigil-agent does not start"
}

agent_says() {
    grep -q -e "$1" "$work_dir/agent.log"
}

environment=$("$source_dir/scripts/mib-environment" "$source_dir/mibs")
eval "$environment"
mkdir "$work_dir/log"
