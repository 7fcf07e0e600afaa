// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_RUNALLTESTS_H
#define VIGIL_SUPPORT_RUNALLTESTS_H

#include <gmock/gmock.h>

namespace support {

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
