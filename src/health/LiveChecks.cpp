// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "health/LiveChecks.h"

#include <vigil/VigilSnmpInterface.h>

using vigil::VigilSnmpInterface;

namespace {
unsigned int count = 0;
}

void LiveChecks::add()
{
    if (count++ == 0)
        VigilSnmpInterface::instance().init("vigilsnmpif");
}

void LiveChecks::remove()
{
    if (--count == 0)
        VigilSnmpInterface::instance().cleanup();
}
