/* SPDX-FileCopyrightText: 2026 The Vigil authors
   SPDX-License-Identifier: MIT */

#ifndef VIGIL_VIGIL_C_H
#define VIGIL_VIGIL_C_H

/* The C interface of the library, for C11 and for every language that calls C functions.

       vigil_check* check = NULL;
       vigil_metric* pending = NULL;
       vigil_range above_100 = {VIGIL_RANGE_NORMAL, -DBL_MAX, 100};

       vigil_check_create("shop", "orders", &check);
       vigil_scalar_create(check, "pending", &pending);
       vigil_scalar_set_range(pending, VIGIL_WARNING_RANGE, &above_100);

       vigil_scalar_set_value(pending, 120);
       vigil_check_update(check);

       vigil_metric_free(pending);
       vigil_check_free(check);

   Results. Every function that can fail returns one of the codes below; 0 is success. On any other code
   nothing has happened and no result is written, unless the function says otherwise. No function throws.

   Texts are UTF-8, end with a NUL byte and are copied. A function that returns a text takes a buffer and its
   size. It writes the size needed, NUL included, to *size. If the buffer is too small it returns
   VIGIL_TOO_SMALL and leaves the buffer alone. A null buffer asks for the size: then the code is VIGIL_OK.

   Handles are numbers in the shape of pointers; they lead to no memory. A handle that was freed, never
   existed or is of the other kind is always detected: VIGIL_BAD_HANDLE. No handle is used twice in a process.

   Threads. Any thread may call any function at any time, with the same handles, too. A function that frees or
   replaces a callback waits for a call in progress; afterwards the callback is never called again. Do not
   hold a lock of your own meanwhile that the callback needs.

   Callbacks run on one thread of the library, one at a time in the process, while a manager waits. Return
   quickly. The user pointer is passed through; it must stay valid until the callback is replaced or freed.
   Inside a callback the functions that would wait for it return VIGIL_IN_CALLBACK: each says so. Freeing is
   allowed there: it is done on another thread as soon as the callback has returned, and no callback of the
   freed object is called any more.

   Processes. In a child forked while the library ran every function returns VIGIL_FORKED. Free all checks
   before the library is unloaded. At the end of the process they may stay, but managers then read UNKNOWN. */

#include <stddef.h>

#include <vigil/vigil_export.h>

#ifdef __cplusplus
extern "C" {
#endif

/* --- Codes */

typedef int vigil_code;

enum {
    VIGIL_OK = 0,
    VIGIL_NO_MEMORY = 1,   /* a part of the work may be done: repeat it */
    VIGIL_NULL = 2,        /* a pointer must not be null */
    VIGIL_BAD_UTF8 = 3,    /* a text is not UTF-8 */
    VIGIL_BAD_HANDLE = 4,  /* freed, unknown, or of the wrong kind */
    VIGIL_BAD_VALUE = 5,   /* a number, or the text of a range, is outside what the function takes */
    VIGIL_TAKEN = 6,       /* the check has a metric of this name, or there is a check with these keys */
    VIGIL_TOO_SMALL = 7,   /* the buffer is too small; *size has the size needed */
    VIGIL_IN_CALLBACK = 8, /* not allowed inside a callback of the library */
    VIGIL_CHECK_ENDED = 9, /* the check of this metric was freed; the metric only waits to be freed, too */
    VIGIL_FORKED = 10,     /* the process was forked while the library ran */
    VIGIL_INTERNAL = 11    /* an error of the library itself, or of a callback in C++ that throws */
};

/* The name of a code, such as "VIGIL_TAKEN"; "unknown" for other numbers. Never null, never freed. */
VIGIL_EXPORT const char* vigil_code_name(vigil_code code);

/* --- The process. These never fail. */

/* 1 on a thread inside a callback of the library, else 0. */
VIGIL_EXPORT int vigil_in_callback(void);

/* 1 in a child process forked while the library ran, else 0. */
VIGIL_EXPORT int vigil_in_forked_child(void);

/* 1 while the library is connected to the local SNMP service, so managers can see the checks, else 0. */
VIGIL_EXPORT int vigil_is_connected(void);

/* --- Health */

typedef int vigil_health;

enum { VIGIL_HEALTH_OK = 0, VIGIL_HEALTH_WARNING = 1, VIGIL_HEALTH_CRITICAL = 2, VIGIL_HEALTH_UNKNOWN = 3 };

/* --- Ranges. Plain values; the functions use no handle and may run in a callback. */

enum {
    VIGIL_RANGE_OFF = 0,     /* every value is acceptable, deliberately: "off" */
    VIGIL_RANGE_NORMAL = 1,  /* acceptable from lower to upper: "10:20" */
    VIGIL_RANGE_INVERSE = 2, /* acceptable below lower and above upper: "@10:20" */
    VIGIL_RANGE_UNSET = 3    /* every value is acceptable, never configured: "" */
};

typedef struct vigil_range
{
    int mode;
    double lower; /* -DBL_MAX: no bound. Not used by the modes OFF and UNSET */
    double upper; /* DBL_MAX: no bound */
} vigil_range;

/* Parses the notation of monitoring plugins, such as "~:80". VIGIL_BAD_VALUE for any other text. */
VIGIL_EXPORT vigil_code vigil_range_parse(const char* text, vigil_range* range);

/* The text of a range, with six significant digits. */
VIGIL_EXPORT vigil_code vigil_range_text(const vigil_range* range, char* buffer, size_t* size);

/* *accepts becomes 1 if value is acceptable, else 0. NaN counts as inside. */
VIGIL_EXPORT vigil_code vigil_range_accepts(const vigil_range* range, double value, int* accepts);

/* --- Checks */

typedef struct vigil_check vigil_check;
typedef struct vigil_metric vigil_metric;

/* Creates a check. The first one of the process starts the library. VIGIL_TAKEN if a check of this interface
   has both keys, or is being freed with them. Not in a callback. */
VIGIL_EXPORT vigil_code vigil_check_create(const char* first_key, const char* second_key,
                                           vigil_check** check);

/* Withdraws the check and all its rows. The last check of the process stops the library, in up to 8 seconds.
   Null is ignored. */
VIGIL_EXPORT vigil_code vigil_check_free(vigil_check* check);

/* The start of the summary; the next update publishes it. */
VIGIL_EXPORT vigil_code vigil_check_set_description(vigil_check* check, const char* description);

/* Evaluates all metrics and publishes the outcome. The library has no timer: call it as often as the tables
   should be refreshed. */
VIGIL_EXPORT vigil_code vigil_check_update(vigil_check* check);

/* The outcome of the last update. */
VIGIL_EXPORT vigil_code vigil_check_status(vigil_check* check, vigil_health* status);
VIGIL_EXPORT vigil_code vigil_check_summary(vigil_check* check, char* buffer, size_t* size);

/* Calls result for each metric of the last update, by name, on the calling thread. It may call any function.
 */
typedef void (*vigil_result_callback)(void* user, const char* name, vigil_health status, const char* summary);
VIGIL_EXPORT vigil_code vigil_check_results(vigil_check* check, vigil_result_callback result, void* user);

/* Calls function when a manager triggers one of the five management functions; number is 1 to 5. Replaces an
   earlier callback. Null does nothing on triggers. Not in a callback. */
typedef void (*vigil_function_callback)(void* user, int number);
VIGIL_EXPORT vigil_code vigil_check_set_function(vigil_check* check, vigil_function_callback function,
                                                 void* user);

/* --- Metrics */

/* Creates a scalar metric, a number, or a simple metric, a status with a text. VIGIL_TAKEN if the check has
   a metric of this name. Not in a callback. */
VIGIL_EXPORT vigil_code vigil_scalar_create(vigil_check* check, const char* name, vigil_metric** metric);
VIGIL_EXPORT vigil_code vigil_simple_create(vigil_check* check, const char* name, vigil_metric** metric);

/* Withdraws the metric and its rows. Its check may have been freed before. Null is ignored. */
VIGIL_EXPORT vigil_code vigil_metric_free(vigil_metric* metric);

VIGIL_EXPORT vigil_code vigil_metric_name(vigil_metric* metric, char* buffer, size_t* size);

/* Whether the value also has a row in the performance data table: on for scalar metrics, off for simple ones.
 */
VIGIL_EXPORT vigil_code vigil_metric_set_performance_data(vigil_metric* metric, int enabled);

/* --- Scalar metrics */

/* The next update publishes the value. */
VIGIL_EXPORT vigil_code vigil_scalar_set_value(vigil_metric* metric, double value);
VIGIL_EXPORT vigil_code vigil_scalar_value(vigil_metric* metric, double* value);

/* Makes the metric UNKNOWN until its next value: "NAME is UNKNOWN, REASON.". */
VIGIL_EXPORT vigil_code vigil_scalar_set_unknown(vigil_metric* metric, const char* reason);

/* Published at once. The unit follows the value directly: begin it with a blank if you want one. */
VIGIL_EXPORT vigil_code vigil_scalar_set_unit(vigil_metric* metric, const char* unit);
VIGIL_EXPORT vigil_code vigil_scalar_unit(vigil_metric* metric, char* buffer, size_t* size);

enum { VIGIL_WARNING_RANGE = 0, VIGIL_CRITICAL_RANGE = 1 };

/* Published at once. VIGIL_BAD_VALUE for another kind or mode, and for bounds that are NaN. */
VIGIL_EXPORT vigil_code vigil_scalar_set_range(vigil_metric* metric, int kind, const vigil_range* range);
VIGIL_EXPORT vigil_code vigil_scalar_range(vigil_metric* metric, int kind, vigil_range* range);

/* Asks accept whether a manager may set a range; 0 refuses. The library then publishes the new range and
   calls changed, which may be null. Replaces earlier callbacks. A null accept refuses every change. Not in a
   callback. */
typedef int (*vigil_range_accept_callback)(void* user, int kind, const vigil_range* range);
typedef void (*vigil_range_changed_callback)(void* user, int kind, const vigil_range* range);
VIGIL_EXPORT vigil_code vigil_scalar_set_range_handler(vigil_metric* metric,
                                                       vigil_range_accept_callback accept,
                                                       vigil_range_changed_callback changed, void* user);

/* --- Simple metrics. The next update publishes status and text, both at once. */

VIGIL_EXPORT vigil_code vigil_simple_set(vigil_metric* metric, vigil_health status, const char* info);
VIGIL_EXPORT vigil_code vigil_simple_status(vigil_metric* metric, vigil_health* status);

/* The text with "{name}", "{value}" and "{info}"; "{name} is {value}, {info}." at creation. */
VIGIL_EXPORT vigil_code vigil_simple_set_template(vigil_metric* metric, const char* text);

/* --- The connection */

typedef struct vigil_watch vigil_watch;

/* Calls changed at each later connect (1) and loss (0). Create it after the first check: the library forgets
   it when the last check is freed. Not in a callback. */
typedef void (*vigil_connection_callback)(void* user, int is_connected);
VIGIL_EXPORT vigil_code vigil_watch_create(vigil_connection_callback changed, void* user,
                                           vigil_watch** watch);

/* Null is ignored. */
VIGIL_EXPORT vigil_code vigil_watch_free(vigil_watch* watch);

#ifdef __cplusplus
}
#endif

#endif
