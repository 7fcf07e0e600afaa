// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "benchmarks/RunningAgent.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>
#include <utility>

namespace {

bool accepts(std::uint16_t port)
{
    const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    const bool connected = connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    close(connection);
    return connected;
}

} // namespace

RunningAgent::RunningAgent() : m_snmpPort(freePort(SOCK_DGRAM)), m_applicationPort(freePort(SOCK_STREAM))
{
    const std::string configuration = directory() + "/agent.conf";
    std::ofstream(configuration) << "rocommunity public 127.0.0.1\nrwcommunity private 127.0.0.1\n";
    startAs({"--standalone", snmpAddress(), "--config", configuration});
}

RunningAgent::RunningAgent(const std::string& agentxAddress)
    : m_snmpPort(0), m_applicationPort(freePort(SOCK_STREAM))
{
    startAs({"--agentx", agentxAddress});
}

void RunningAgent::startAs(std::vector<std::string> role)
{
    std::vector<std::string> arguments = {VIGIL_AGENT_PROGRAM, "--listen",
                                          "127.0.0.1:" + std::to_string(m_applicationPort)};
    std::move(role.begin(), role.end(), std::back_inserter(arguments));
    start(arguments);
    waitUntilReady();
}

void RunningAgent::waitUntilReady() const
{
    constexpr int limit = 1000;
    for (int attempt = 0; attempt < limit; ++attempt) {
        if (accepts(m_applicationPort))
            return;
        usleep(20000);
    }
    fail("the agent does not start");
}
