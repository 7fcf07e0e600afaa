// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/KwLogFile.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include "LogDirectory.h"
#include "support/QtMessages.h"

TEST(LogPrefix, WithoutAnApplicationADefaultNameIsUsed)
{
    ASSERT_EQ(QCoreApplication::instance(), nullptr);
    const support::QtMessages aboutTheMissingApplication;
    const LogDirectory directory;
    base::KwLogFile log;
    log.setLogDirectory(directory.path());
    EXPECT_TRUE(log.initWithApplicationName());
    EXPECT_EQ(directory.files(), QStringList("DefaultAppName_0.log"));
}
