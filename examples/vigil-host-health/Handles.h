// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_HANDLES_H
#define VIGIL_HOST_HEALTH_HANDLES_H

#include <vigil/vigil.h>

#include <memory>

// The library's objects are ended by destroy() and remove(), not by delete.

struct DestroyCheck
{
    void operator()(vigil::HealthCheck* check) const { check->destroy(); }
};

struct RemoveMetric
{
    template <typename Metric>
    void operator()(Metric* metric) const
    {
        metric->remove();
    }
};

using CheckHandle = std::unique_ptr<vigil::HealthCheck, DestroyCheck>;
using ScalarHandle = std::unique_ptr<vigil::ScalarMetric, RemoveMetric>;
using SimpleHandle = std::unique_ptr<vigil::SimpleMetric, RemoveMetric>;

#endif
