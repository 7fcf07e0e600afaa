// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "benchmarks/RunningProgram.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "benchmarks/Clocks.h"

namespace {

std::string temporaryDirectory()
{
    std::string path = (std::filesystem::temp_directory_path() / "vigil-benchmark-XXXXXX").string();
    if (!mkdtemp(path.data())) {
        std::perror("no temporary directory");
        std::exit(1);
    }
    return path;
}

[[noreturn]] void run(const std::string& directory, const std::vector<std::string>& arguments)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const char* variable : {"TMPDIR", "HOME", "SNMP_PERSISTENT_DIR", "SNMPCONFPATH"})
        setenv(variable, directory.c_str(), 1);
    setenv("SNMP_PERSISTENT_FILE", "/dev/null", 1); // snmpd would sync each line of its configuration
    setenv("MIBS", "", 1);
    const int log = open((directory + "/log").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    std::vector<char*> words;
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str())); // exec changes none of them
    words.push_back(nullptr);
    execv(words[0], words.data());
    _exit(127);
}

} // namespace

std::uint16_t freePort(int type)
{
    const int probe = socket(AF_INET, type | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(probe, generic, size) != 0 || getsockname(probe, generic, &size) != 0) {
        std::perror("no free port");
        std::exit(1);
    }
    close(probe);
    return ntohs(address.sin_port);
}

RunningProgram::RunningProgram() : m_directory(temporaryDirectory()) {}

RunningProgram::~RunningProgram()
{
    if (m_process > 0) {
        kill(m_process, SIGTERM);
        waitpid(m_process, nullptr, 0);
    }
    std::filesystem::remove_all(m_directory);
}

void RunningProgram::start(const std::vector<std::string>& arguments)
{
    m_process = fork();
    if (m_process < 0)
        fail("cannot fork");
    if (m_process == 0)
        run(m_directory, arguments);
}

void RunningProgram::fail(const char* what)
{
    std::perror(what);
    std::exit(1);
}

double RunningProgram::processorNanoseconds() const
{
    clockid_t clock{};
    if (clock_getcpuclockid(m_process, &clock) != 0)
        fail("no clock of the program");
    return nanoseconds(clock);
}
