// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/http/TrustedHost.h"

namespace {

bool isTrusted(const char* header)
{
    return agent::isTrustedHost(header, "Shop1");
}

} // namespace

TEST(TrustedHost, AddressesAreTrusted)
{
    EXPECT_TRUE(isTrusted("127.0.0.1"));
    EXPECT_TRUE(isTrusted("127.0.0.1:43180"));
    EXPECT_TRUE(isTrusted("192.0.2.7:80"));
    EXPECT_TRUE(isTrusted("[::1]"));
    EXPECT_TRUE(isTrusted("[::1]:43180"));
}

TEST(TrustedHost, OfNamesLocalhostAndTheMachinesOwnAreTrusted)
{
    EXPECT_TRUE(isTrusted("localhost:43180"));
    EXPECT_TRUE(isTrusted("LocalHost"));
    EXPECT_TRUE(isTrusted("shop1:43180"));
    EXPECT_FALSE(isTrusted("evil.example"));
    EXPECT_FALSE(isTrusted("shop1.evil.example:43180"));
    EXPECT_FALSE(isTrusted("localhost.evil.example"));
    EXPECT_FALSE(isTrusted("127.0.0.1.evil.example:43180"));
}

TEST(TrustedHost, AnythingElseIsRefused)
{
    for (const char* header :
         {"", ":43180", "127.0.0.1:", "127.0.0.1:x", "127.0.0.1:65536", "127.0.0.1:1:2", "localhost evil",
          "evil.example@127.0.0.1", "[::1", "[::1]x", "[evil.example]", "[127.0.0.1]", "::1"})
        EXPECT_FALSE(isTrusted(header)) << header;
}

TEST(TrustedHost, AMachineWithoutANameTrustsNoEmptyHost)
{
    EXPECT_FALSE(agent::isTrustedHost("", ""));
    EXPECT_FALSE(agent::isTrustedHost(":80", ""));
}
