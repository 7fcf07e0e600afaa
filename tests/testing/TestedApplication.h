// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_TESTING_TESTEDAPPLICATION_H
#define VIGIL_TESTS_TESTING_TESTEDAPPLICATION_H

#include <gmock/gmock.h>

#include <vigil/raii.h>
#include <vigil/testing/FakeService.h>
#include <vigil/testing/Matchers.h>

#include "support/LibraryLog.h"

/// An application with one check and one metric, connected to a fake service.
class TestedApplication : public testing::Test
{
protected:
    TestedApplication() { pending.setWarningRange(vigil::Range::CreateThresholdAbove(40)); }

    void publish(double value)
    {
        pending.setValue(value);
        check.update();
    }

    support::LibraryLog log;
    vigil::test::FakeService service;
    vigil::CheckHandle check{"shop", "orders"};
    vigil::ScalarHandle pending{check, "pending"};
};

#endif
