// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// An application with one health check, "test" and its first argument. Its metric "value" takes each number
// from standard input. It shuts down cleanly at the end of the input.

#include <vigil/vigil.h>

#include <iostream>

int main(int, char** arguments)
{
    vigil::HealthCheck* check = vigil::createHealthCheck("test", arguments[1]);
    vigil::ScalarMetric* value = check->createScalarMetric("value");
    double number = 0;
    while (std::cin >> number) {
        value->setValue(number);
        check->update();
    }
    value->remove();
    check->destroy();
}
