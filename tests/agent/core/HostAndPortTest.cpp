// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/core/HostAndPort.h"
#include "support/QtPrinters.h"

using agent::hostAndPort;

TEST(HostAndPort, AnIPv6AddressHasBrackets)
{
    EXPECT_EQ(hostAndPort(QHostAddress(QStringLiteral("127.0.0.1")), 161), QStringLiteral("127.0.0.1:161"));
    EXPECT_EQ(hostAndPort(QHostAddress(QStringLiteral("::1")), 161), QStringLiteral("[::1]:161"));
}

TEST(HostAndPort, TheScopeOfAnAddressIsNoPlaceForThePort)
{
    EXPECT_EQ(hostAndPort(QHostAddress(QStringLiteral("fe80::1%2")), 80), QStringLiteral("[fe80::1%2]:80"));
}
