// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_VIGIL_C_H
#define VIGIL_VIGIL_C_H

#include <vigil/vigil_export.h>

#ifdef __cplusplus
extern "C" {
#endif

/* --- The process. These two may be called from any thread at any time, and never fail. */

/* 1 on a thread inside a callback of the library, else 0. There the library refuses all calls that would wait
   for the end of the callback. */
VIGIL_EXPORT int vigil_in_callback(void);

/* 1 in a child process forked while the library ran, else 0. There every call does nothing. */
VIGIL_EXPORT int vigil_in_forked_child(void);

#ifdef __cplusplus
}
#endif

#endif
