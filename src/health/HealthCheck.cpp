// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/HealthCheck.h>

namespace vigil {

HealthCheck::HealthCheck() = default;
HealthCheck::HealthCheck(const HealthCheck&) = default;
HealthCheck& HealthCheck::operator=(const HealthCheck&) = default;
HealthCheck::~HealthCheck() = default;

} // namespace vigil
