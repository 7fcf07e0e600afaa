/* SPDX-FileCopyrightText: 2026 The Vigil authors
   SPDX-License-Identifier: MIT */

/* Uses the C interface without any run-time library, as a compiler of another vendor may do it. */

#include <vigil/vigil_c.h>

int _fltused; /* Microsoft's compilers expect it in programs with floating point */

static const double largest = 1.7976931348623157e308;

__declspec(dllimport) void __stdcall ExitProcess(unsigned int code);

static int run(void)
{
    const vigil_range upTo3 = {VIGIL_RANGE_NORMAL, -largest, 3};
    vigil_check* check = 0;
    vigil_metric* metric = 0;
    vigil_health status = -1;
    if (vigil_check_create("other", "compiler", &check) != VIGIL_OK ||
        vigil_scalar_create(check, "metric", &metric) != VIGIL_OK ||
        vigil_scalar_set_range(metric, VIGIL_CRITICAL_RANGE, &upTo3) != VIGIL_OK ||
        vigil_scalar_set_value(metric, 4) != VIGIL_OK || vigil_check_update(check) != VIGIL_OK ||
        vigil_check_status(check, &status) != VIGIL_OK)
        return 1;
    if (vigil_metric_free(metric) != VIGIL_OK || vigil_check_free(check) != VIGIL_OK)
        return 2;
    return status == VIGIL_HEALTH_CRITICAL ? 42 : 3;
}

void entry(void);
void entry(void)
{
    ExitProcess((unsigned int)run());
}
