// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/DebugOutput.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <string>

#include "support/QtMessages.h"

namespace {

class DebugOutput : public testing::Test
{
protected:
    ~DebugOutput() override { QLoggingCategory::setFilterRules({}); }

    support::QtMessages messages;
};

TEST_F(DebugOutput, WritesTheItemsAsQtDoes)
{
    const std::string text = "t\xC3\xA4xt";
    base::writeDebug(base::tablesCategory,
                     [&](QDebug line) { line << "row for " << text.c_str() << "end\n"; });
    base::writeDebug(base::metricsCategory, [](QDebug line) { line.noquote() << QStringLiteral("plain"); });
    EXPECT_EQ(messages.all(),
              QStringList({QStringLiteral(u"row for  t\u00e4xt end\n"), QStringLiteral("plain")}));
}

TEST_F(DebugOutput, ACategoryThatIsTurnedOffBuildsNoText)
{
    QLoggingCategory::setFilterRules(QStringLiteral("vigil.*.debug=false"));
    int built = 0;
    base::writeDebug(base::tablesCategory, [&](QDebug) { ++built; });
    base::writeDebug(base::metricsCategory, [&](QDebug) { ++built; });
    EXPECT_EQ(built, 0);
    qDebug("the host's own");
    EXPECT_EQ(messages.all(), QStringList({QStringLiteral("the host's own")}));
}

TEST_F(DebugOutput, EverythingOfTheLibraryCanBeTurnedOffAtOnce)
{
    base::writeDebug(base::connectionCategory, "a line");
    base::writeWarning(base::logCategory, QStringLiteral("a warning"));
    EXPECT_EQ(messages.all(), QStringList({QStringLiteral("a line"), QStringLiteral("a warning")}));
    QLoggingCategory::setFilterRules(QStringLiteral("vigil.*=false"));
    base::writeDebug(base::connectionCategory, "a line");
    base::writeWarning(base::logCategory, QStringLiteral("a warning"));
    base::writeDebug(base::tablesCategory, "a line");
    base::writeDebug(base::metricsCategory, "a line");
    qWarning("the host's own");
    EXPECT_EQ(messages.all().size(), 3);
    EXPECT_EQ(messages.all().last(), QStringLiteral("the host's own"));
}

} // namespace
