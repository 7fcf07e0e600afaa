// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_REFRESHHANDLER_H
#define VIGIL_HOST_HEALTH_REFRESHHANDLER_H

#include <vigil/vigil.h>

#include "UpdateClock.h"

/// The management functions: function 1 updates everything at once, the others do nothing. Called on the
/// library's client thread, so it leaves the update to the main loop.
class RefreshHandler : public vigil::ManagementHandler
{
public:
    explicit RefreshHandler(UpdateClock& clock) : m_clock(clock) {}

    void managementFunction1() override;
    void managementFunction2() override;
    void managementFunction3() override;
    void managementFunction4() override;
    void managementFunction5(const std::string& argument) override;

private:
    UpdateClock& m_clock;
};

#endif
