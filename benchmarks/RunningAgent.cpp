// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "benchmarks/RunningAgent.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "benchmarks/Clocks.h"

namespace {

[[noreturn]] void fail(const char* what)
{
    std::perror(what);
    std::exit(1);
}

std::uint16_t freePort(int type)
{
    const int probe = socket(AF_INET, type | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(probe, generic, size) != 0 || getsockname(probe, generic, &size) != 0)
        fail("no free port");
    close(probe);
    return ntohs(address.sin_port);
}

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

std::string temporaryDirectory()
{
    std::string path = (std::filesystem::temp_directory_path() / "vigil-benchmark-XXXXXX").string();
    if (!mkdtemp(path.data()))
        fail("no temporary directory");
    return path;
}

} // namespace

RunningAgent::RunningAgent()
    : m_directory(temporaryDirectory()),
      m_snmpPort(freePort(SOCK_DGRAM)),
      m_applicationPort(freePort(SOCK_STREAM))
{
    std::ofstream(m_directory + "/agent.conf")
        << "rocommunity public 127.0.0.1\nrwcommunity private 127.0.0.1\n";
    m_process = fork();
    if (m_process < 0)
        fail("cannot fork");
    if (m_process == 0)
        run();
    waitUntilReady();
}

RunningAgent::~RunningAgent()
{
    kill(m_process, SIGTERM);
    waitpid(m_process, nullptr, 0);
    std::filesystem::remove_all(m_directory);
}

double RunningAgent::processorNanoseconds() const
{
    clockid_t clock{};
    if (clock_getcpuclockid(m_process, &clock) != 0)
        fail("no clock of the agent");
    return nanoseconds(clock);
}

void RunningAgent::run()
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const char* variable : {"TMPDIR", "HOME", "SNMP_PERSISTENT_DIR"})
        setenv(variable, m_directory.c_str(), 1);
    const int log = open((m_directory + "/agent.log").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(log, STDERR_FILENO);
    const std::string configuration = m_directory + "/agent.conf";
    const std::string address = "127.0.0.1:" + std::to_string(m_applicationPort);
    execl(VIGIL_AGENT_PROGRAM, "vigil-agent", "--standalone", snmpAddress().c_str(), "--config",
          configuration.c_str(), "--listen", address.c_str(), nullptr);
    _exit(127);
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
