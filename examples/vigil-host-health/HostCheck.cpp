// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "HostCheck.h"

#include "Console.h"

HostCheck::HostCheck(const std::string& name, const std::string& description, UpdateClock& clock)
    : m_check("host", name)
{
    m_check.setDescription(description);
    // Functions run on a thread of the library and must return quickly, so the main loop does the work.
    m_check.setFunction(1, [&clock] { clock.requestNow(); });
    for (int number = 2; number <= 5; ++number)
        m_check.setFunction(number, [number] {
            say("Management function " + std::to_string(number) + " does nothing in this program.");
        });
}

void HostCheck::update()
{
    const std::string values = readValues();
    m_check.update();
    const std::string status = vigil::Result().getStatusString(m_check.getStatus());
    say(m_check.getFirstKey() + '/' + m_check.getSecondKey() + ' ' + status + ": " + values);
}
