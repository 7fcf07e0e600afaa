// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The program hello_health.cpp on the exported classes alone, with pointers to destroy by hand.

#include <vigil/vigil.h>

#include <chrono>
#include <iostream>
#include <thread>

int main()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("hello", "health");
    check->setDescription("Hello, health");

    vigil::ScalarMetric* seconds = check->createScalarMetric("seconds");
    seconds->setUnit(" s");
    seconds->setWarningRange(vigil::Range::CreateThresholdAbove(3));

    for (int second = 1; second <= 5; ++second) {
        seconds->setValue(second);
        check->update();
        std::cout << check->getSummary() << std::endl;
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }

    seconds->remove();
    check->destroy();
}
