#include <vigil/HealthCheck.h>

namespace vigil {

HealthCheck::HealthCheck() = default;
HealthCheck::HealthCheck(const HealthCheck&) = default;
HealthCheck& HealthCheck::operator=(const HealthCheck&) = default;
HealthCheck::~HealthCheck() = default;

} // namespace vigil
