// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "StopSignal.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t received = 0;

extern "C" void onStopSignal(int)
{
    received = 1;
}

} // namespace

void stopsignal::install()
{
    std::signal(SIGINT, onStopSignal);
    std::signal(SIGTERM, onStopSignal);
}

bool stopsignal::isReceived()
{
    return received != 0;
}
