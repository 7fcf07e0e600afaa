// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A host with more rights than the user who started it. It must run as root, and sees a network and a
// temporary folder of its own. Prints "default port" if the library has tried the service's own port.
//
// Exit code: 3 without the rights.

#include <vigil/vigil.h>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

namespace {

constexpr const char* log = "/tmp/OrvanData/Logging/kw-vigil-snmp-client/kw-vigil-snmp_0.log";

bool isolate()
{
    return unshare(CLONE_NEWNS | CLONE_NEWNET) == 0 &&
           mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", "/tmp", "tmpfs", 0, nullptr) == 0;
}

bool becomeSetUserId()
{
    constexpr uid_t caller = 65534;
    return setresuid(caller, 0, 0) == 0;
}

} // namespace

int main()
{
    if (!isolate() || !becomeSetUserId())
        return 3;
    std::cout << "ready" << std::endl;
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    check->update();
    std::cout << "leaving" << std::endl;
    check->destroy();
    std::ifstream file(log);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (text.find("port: 43125") != std::string::npos)
        std::cout << "default port" << std::endl;
    return 0;
}
