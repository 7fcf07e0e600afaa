// A plugin that uses the library, as applications have them.

#include <vigil/vigil.h>

#include "unloadable_plugin_export.h"

extern "C" UNLOADABLE_PLUGIN_EXPORT void start()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("plugin", "check");
    check->createScalarMetric("metric");
    check->update();
}

extern "C" UNLOADABLE_PLUGIN_EXPORT void startAndStop()
{
    vigil::createHealthCheck("plugin", "check")->destroy();
}
