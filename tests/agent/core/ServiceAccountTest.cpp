// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/core/ServiceAccount.h"
#include "support/QtPrinters.h"

TEST(ServiceAccount, HasTheIdentifierWindowsDerivesFromTheName)
{
    // Windows documents this one.
    EXPECT_EQ(agent::serviceAccount::sid(QStringLiteral("TrustedInstaller")),
              QStringLiteral("S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464"));
}
