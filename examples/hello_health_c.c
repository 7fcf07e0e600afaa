/* SPDX-FileCopyrightText: 2026 The Vigil authors
   SPDX-License-Identifier: MIT */

/* The program hello_health.cpp with the C interface. Link it with libvigil, or on Windows with vigil.lib. */

#include <vigil/vigil_c.h>

#include <float.h>
#include <stdio.h>
#include <stdlib.h>

static void require(vigil_code code)
{
    if (code != VIGIL_OK) {
        fprintf(stderr, "%s\n", vigil_code_name(code));
        exit(1); /* NOLINT(concurrency-mt-unsafe): no other thread exits */
    }
}

static int acceptRange(void* user, int kind, const vigil_range* range)
{
    (void)user;
    (void)kind;
    return range->mode == VIGIL_RANGE_NORMAL; /* any other change of a manager is refused */
}

int main(void)
{
    const vigil_range upTo3 = {VIGIL_RANGE_NORMAL, -DBL_MAX, 3};
    vigil_check* check = NULL;
    vigil_metric* seconds = NULL;
    int second;

    require(vigil_check_create("hello", "health", &check));
    require(vigil_check_set_description(check, "Hello, health"));
    require(vigil_scalar_create(check, "seconds", &seconds));
    require(vigil_scalar_set_unit(seconds, " s"));
    require(vigil_scalar_set_range(seconds, VIGIL_WARNING_RANGE, &upTo3));
    require(vigil_scalar_set_range_handler(seconds, acceptRange, NULL, NULL));

    for (second = 1; second <= 5; ++second) {
        char summary[200];
        size_t size = sizeof(summary);
        require(vigil_scalar_set_value(seconds, second));
        require(vigil_check_update(check));
        require(vigil_check_summary(check, summary, &size));
        puts(summary);
    }

    require(vigil_metric_free(seconds));
    require(vigil_check_free(check));
    return 0;
}
