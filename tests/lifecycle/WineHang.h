// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_LIFECYCLE_WINEHANG_H
#define VIGIL_TESTS_LIFECYCLE_WINEHANG_H

#include <QString>

/// True if an ending process hangs in one of two locks of Wine's own. Each system has one source file; only
/// Wine has such hangs.
///
/// At the end of a process Wine kills the other threads, some with a lock of Wine's held:
/// - the spin lock of a waiting thread's queue, for which RtlWakeAddressSingle() then spins. A program
/// without
///   this library whose threads allocate memory hung like this in 12 of 175 exits (Wine 8);
/// - the lock of the window system, which Qt needs to destroy a thread's window.
/// On Windows the kernel holds both.
bool hangsInWine(qint64 processId);

/// Where the threads of a process are, for a message. Empty where the system does not tell.
QString placesOf(qint64 processId);

#endif
