// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "RefreshHandler.h"

#include <string>

#include "Console.h"

namespace {

void sayUnused(int function)
{
    say("Management function " + std::to_string(function) + " does nothing in this program.");
}

} // namespace

void RefreshHandler::managementFunction1()
{
    m_clock.requestNow();
}

void RefreshHandler::managementFunction2()
{
    sayUnused(2);
}

void RefreshHandler::managementFunction3()
{
    sayUnused(3);
}

void RefreshHandler::managementFunction4()
{
    sayUnused(4);
}

void RefreshHandler::managementFunction5(const std::string&)
{
    sayUnused(5);
}
