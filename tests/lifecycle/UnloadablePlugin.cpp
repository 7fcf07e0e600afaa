// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A plugin that uses the library, as applications have them. PLUGIN_NAME is the first key of its checks.

#include <vigil/vigil.h>

#include "plugin_export.h"

namespace {

vigil::HealthCheck* makeCheck()
{
    vigil::HealthCheck* check = vigil::createHealthCheck(PLUGIN_NAME, "check");
    check->setDescription(PLUGIN_NAME);
    check->createScalarMetric("metric");
    check->update();
    return check;
}

} // namespace

extern "C" PLUGIN_EXPORT void start()
{
    makeCheck();
}

/// Everything that was published reaches the service before this comes back, however long it takes.
extern "C" PLUGIN_EXPORT void startAndStop()
{
    makeCheck()->destroy();
}
