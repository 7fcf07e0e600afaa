// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_RAII_H
#define VIGIL_RAII_H

// Handles that own checks and metrics, with functions in place of handler classes, and a timer. Headers only,
// for C++14 and later. They use the classes of <vigil/vigil.h>, and a program may use both.

#include <vigil/CheckHandle.h>
#include <vigil/ConnectionWatch.h>
#include <vigil/Range.h>
#include <vigil/Result.h>
#include <vigil/ScalarHandle.h>
#include <vigil/SimpleHandle.h>
#include <vigil/Updater.h>

#endif
