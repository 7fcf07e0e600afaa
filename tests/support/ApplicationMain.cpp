// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <QCoreApplication>

#include "RunAllTests.h"

int main(int argc, char** argv)
{
    support::forgetLoggingRules();
    QCoreApplication application(argc, argv);
    return support::runAllTests(argc, argv);
}
