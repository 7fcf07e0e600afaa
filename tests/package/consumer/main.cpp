// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/vigil.h>

#include <iostream>
#include <string>

int main()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("consumer", "package");
    check->setDescription("Installed");
    vigil::ScalarMetric* metric = check->createScalarMetric("metric");
    metric->setCriticalRange(vigil::Range::CreateThresholdAbove(1));
    metric->setValue(2);
    check->update();
    const bool isJudged = check->getStatus() == vigil::HealthStatus::Critical;
    const std::string summary = check->getSummary();
    metric->remove();
    check->destroy();

    std::cout << summary << std::endl;
    return isJudged ? 0 : 1;
}
