// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_RUNALLTESTS_H
#define VIGIL_SUPPORT_RUNALLTESTS_H

#include <gmock/gmock.h>

#include <QByteArray>

namespace support {

/// Tests read the library's debug output, which a developer may have turned off. Call it before the
/// QCoreApplication is made, which reads the rules.
inline void forgetLoggingRules()
{
    qunsetenv("QT_LOGGING_RULES");
}

/// Lets a failed ASSERT in a helper function end the whole test, not just the helper. Without it a test goes
/// on after a failed start, and hides the cause among the consequences.
class StopAtFatalFailure : public testing::EmptyTestEventListener
{
    void OnTestPartResult(const testing::TestPartResult& result) override
    {
        if (result.fatally_failed())
            throw testing::AssertionException(result);
    }
};

/// What main() of a test program returns.
inline int runAllTests(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    // After the printer, which would not see the failure otherwise.
    testing::UnitTest::GetInstance()->listeners().Append(new StopAtFatalFailure);
    return RUN_ALL_TESTS();
}

} // namespace support

#endif
