// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A plugin of an application, linked with the library. PLUGIN_NAME is the first key of its checks.

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

/// A static of the plugin, which destroys its check when the plugin is unloaded.
struct Owner
{
    vigil::HealthCheck* check = nullptr;
    ~Owner()
    {
        if (check)
            check->destroy();
    }
};

Owner owner;

} // namespace

extern "C" PLUGIN_EXPORT void start()
{
    makeCheck();
}

extern "C" PLUGIN_EXPORT void startAndStopAtUnload()
{
    owner.check = makeCheck();
}

/// Returns once the service has received every value.
extern "C" PLUGIN_EXPORT void startAndStop()
{
    makeCheck()->destroy();
}
