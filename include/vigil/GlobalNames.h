// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_GLOBALNAMES_H
#define VIGIL_GLOBALNAMES_H

#include <vigil/vigil_export.h>

// Connector, ManagementHandler, RangeChangeHandler and RangeKind are names of the global namespace, because
// their symbols are part of the binary interface. An application with such names of its own defines
// VIGIL_NO_GLOBAL_NAMES for all of its sources: then only vigil::ManagementHandler and so on exist. Handlers
// work the same either way. Do not link sources with and without the macro into one program if they pass
// these types to each other.

#if defined(VIGIL_NO_GLOBAL_NAMES)
#define VIGIL_GLOBAL_BEGIN namespace vigil {
#define VIGIL_GLOBAL_END }
#define VIGIL_GLOBAL_EXPORT // the exported symbols are those of the global names
#else
#define VIGIL_GLOBAL_BEGIN
#define VIGIL_GLOBAL_END
#define VIGIL_GLOBAL_EXPORT VIGIL_EXPORT
#endif

#endif
