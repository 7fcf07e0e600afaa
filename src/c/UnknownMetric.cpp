// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// <vigil/raii.h> needs this function beside the exported classes.

#include <vigil/detail/OwnedMetric.h>

#include "health/ScalarMetricImpl.h"

void vigil_cxx_set_unknown(vigil::ScalarMetric* metric, const char* reason)
{
    if (auto* implementation = dynamic_cast<ScalarMetricImpl*>(metric))
        implementation->setUnknown(reason);
}
