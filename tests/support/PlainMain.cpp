// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "RunAllTests.h"

int main(int argc, char** argv)
{
    support::forgetLoggingRules();
    return support::runAllTests(argc, argv);
}
