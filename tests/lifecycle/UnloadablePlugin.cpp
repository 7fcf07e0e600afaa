// A plugin that uses the library, as applications have them. PLUGIN_NAME is the first key of its checks.

#include <vigil/vigil.h>

#include "plugin_export.h"

extern "C" PLUGIN_EXPORT void start()
{
    vigil::HealthCheck* check = vigil::createHealthCheck(PLUGIN_NAME, "check");
    check->setDescription(PLUGIN_NAME);
    check->createScalarMetric("metric");
    check->update();
}

extern "C" PLUGIN_EXPORT void startAndStop()
{
    vigil::createHealthCheck(PLUGIN_NAME, "check")->destroy();
}
