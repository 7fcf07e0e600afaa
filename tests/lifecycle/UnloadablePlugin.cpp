// A plugin that uses the library, as applications have them.

#include <vigil/vigil.h>

extern "C" __attribute__((visibility("default"))) void start()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("plugin", "check");
    check->createScalarMetric("metric");
    check->update();
}

extern "C" __attribute__((visibility("default"))) void startAndStop()
{
    vigil::createHealthCheck("plugin", "check")->destroy();
}
