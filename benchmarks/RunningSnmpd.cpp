// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "benchmarks/RunningSnmpd.h"

#include <sys/socket.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

RunningSnmpd::RunningSnmpd(const std::string& directives) : m_snmpPort(freePort(SOCK_DGRAM))
{
    const std::string configuration = directory() + "/snmpd.conf";
    std::ofstream(configuration) << "agentaddress " << snmpAddress() << "\nrocommunity public 127.0.0.1\n"
                                 << "master agentx\nagentXSocket unix:" << agentxAddress()
                                 << "\nagentXTimeout 60\nagentXRetries 0\n" // the machine may be busy
                                 << directives;
    start({VIGIL_SNMPD_PROGRAM, "-f", "-Lo", "-C", "-c", configuration, "-I", "-smux"});
    waitUntilReady();
}

void RunningSnmpd::waitUntilReady() const
{
    constexpr int limit = 6000;
    for (int attempt = 0; attempt < limit; ++attempt) {
        std::ifstream log(directory() + "/log");
        const std::string text{std::istreambuf_iterator<char>(log), {}};
        if (text.find("NET-SNMP version") != std::string::npos)
            return;
        usleep(20000);
    }
    fail("snmpd does not start");
}
