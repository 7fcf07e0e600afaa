// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The shortest complete program: one check with one metric, published once a second for five seconds.

#include <vigil/raii.h>

#include <chrono>
#include <iostream>
#include <thread>

int main()
{
    vigil::CheckHandle check("hello", "health");
    check.setDescription("Hello, health");

    vigil::ScalarHandle seconds(check, "seconds");
    seconds.setUnit(" s");
    seconds.setWarningRange(vigil::Range::CreateThresholdAbove(3));

    for (int second = 1; second <= 5; ++second) {
        seconds.setValue(second);
        check.update();
        std::cout << check.getSummary() << std::endl;
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}
