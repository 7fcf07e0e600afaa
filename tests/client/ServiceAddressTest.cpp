// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ServiceAddress.h"

#include <gmock/gmock.h>

#include <string>

#include "base/Logging.h"
#include "support/LibraryLog.h"

using support::LibraryLog;

namespace {

constexpr const char* variable = "VIGIL_SERVICE_PORT";

class ServiceAddress : public testing::Test
{
protected:
    ServiceAddress() { base::startLogging(); }
    ~ServiceAddress() override
    {
        base::stopLogging();
        qunsetenv(variable);
    }

    LibraryLog log;
};

TEST_F(ServiceAddress, DefaultsToPort43125OfTheLoopbackAddress)
{
    qunsetenv(variable);
    const base::ConnectionSettings settings = serviceAddress();
    EXPECT_EQ(settings.host.toStdString(), "127.0.0.1");
    EXPECT_EQ(settings.port, 43125);
    EXPECT_FALSE(log.contains(variable));
}

TEST_F(ServiceAddress, TheEnvironmentGivesAnotherPort)
{
    for (const char* text : {"1", "1161", "65535"}) {
        qputenv(variable, text);
        EXPECT_EQ(serviceAddress().port, std::stoi(text));
    }
    EXPECT_FALSE(log.contains(variable));
}

TEST_F(ServiceAddress, ABadPortIsReportedAndNoPortTaken)
{
    for (const char* text :
         {"0", "-1", "65536", "4294967297", "abc", "43126x", "1.5", "0x10", "99999999999"}) {
        qputenv(variable, text);
        EXPECT_EQ(serviceAddress().port, 0) << text;
        EXPECT_FALSE(isServiceOff());
        EXPECT_EQ(log.count("___ERROR___ VIGIL_SERVICE_PORT is \"" + std::string(text) + "\""), 1) << text;
    }
}

TEST_F(ServiceAddress, OffIsNoPort)
{
    qputenv(variable, "off");
    EXPECT_TRUE(isServiceOff());
    qunsetenv(variable);
    EXPECT_FALSE(isServiceOff());
}

TEST_F(ServiceAddress, AnEmptyVariableIsReportedToo)
{
    qputenv(variable, "");
    if (!qEnvironmentVariableIsSet(variable))
        GTEST_SKIP() << "this system has no empty variables";
    EXPECT_EQ(serviceAddress().port, 0);
    EXPECT_EQ(log.count("___ERROR___ VIGIL_SERVICE_PORT is \"\""), 1);
}

} // namespace
