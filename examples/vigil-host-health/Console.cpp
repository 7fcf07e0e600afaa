// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "Console.h"

#include <iostream>
#include <mutex>

namespace {

void writeLine(std::ostream& out, const std::string& line)
{
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    out << line << std::endl;
}

} // namespace

void say(const std::string& line)
{
    writeLine(std::cout, line);
}

void complain(const std::string& line)
{
    writeLine(std::cerr, "vigil-host-health: " + line);
}
