// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "support/AgentProcess.h"
#include "support/ApplicationProcess.h"
#include "support/SnmpTool.h"
#include "support/SnmpdProcess.h"

using support::AgentProcess;
using support::ApplicationProcess;
using support::SnmpdProcess;
using support::SnmpTool;

namespace {

enum class Part { Snmpd, Agent, Application };

using Order = std::array<Part, 3>;

std::string nameOf(const testing::TestParamInfo<Order>& info)
{
    const char* const names[] = {"Snmpd", "Agent", "Application"};
    std::string name;
    for (const Part part : info.param)
        name += names[static_cast<int>(part)];
    return name;
}

/// All three programs for real, in the order of the parameter.
class RestartOrder : public testing::TestWithParam<Order>
{
protected:
    void start(Part part)
    {
        switch (part) {
        case Part::Snmpd:
            ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
            break;
        case Part::Agent:
            ASSERT_TRUE(agent.start()) << agent.log().constData();
            break;
        case Part::Application:
            ASSERT_TRUE(application.start());
            application.publish(++value);
            break;
        }
    }

    bool kill(Part part)
    {
        switch (part) {
        case Part::Snmpd:
            return snmpd.kill();
        case Part::Agent:
            return agent.kill();
        case Part::Application:
            return application.kill();
        }
        return false;
    }

    void expectServed()
    {
        EXPECT_TRUE(
            SnmpTool(snmpd.udpAddress()).waitFor(ApplicationProcess::valueName(), QString::number(value)))
            << agent.log().constData();
    }

    const quint16 port = AgentProcess::freePort();
    SnmpdProcess snmpd;
    AgentProcess agent{
        snmpd.agentxAddress(),
        {QStringLiteral("--verbose"), QStringLiteral("--listen"), QStringLiteral("127.0.0.1:%1").arg(port)}};
    ApplicationProcess application{port};
    int value = 0;
};

} // namespace

TEST_P(RestartOrder, EndsWithTheNewestValueServed)
{
    for (const Part part : GetParam())
        start(part);
    expectServed();
}

TEST_P(RestartOrder, RecoversAfterEachHasBeenKilled)
{
    for (const Part part : {Part::Snmpd, Part::Agent, Part::Application})
        start(part);
    expectServed();
    for (const Part part : GetParam()) {
        ASSERT_TRUE(kill(part));
        start(part);
        expectServed();
    }
}

INSTANTIATE_TEST_SUITE_P(Order, RestartOrder,
                         testing::Values(Order{Part::Snmpd, Part::Agent, Part::Application},
                                         Order{Part::Snmpd, Part::Application, Part::Agent},
                                         Order{Part::Agent, Part::Snmpd, Part::Application},
                                         Order{Part::Agent, Part::Application, Part::Snmpd},
                                         Order{Part::Application, Part::Snmpd, Part::Agent},
                                         Order{Part::Application, Part::Agent, Part::Snmpd}),
                         nameOf);
