// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_OIDTYPE_H
#define VIGIL_CLIENT_OIDTYPE_H

/// The registration of vigil::Oid with Qt, under which identifiers cross threads.
///
/// Qt has one registry for the process, and two plugins may each bring a copy of this library. So each copy
/// takes back its own registration alone, and the other one then registers the type again.
///
/// Threads: any.
namespace OidType {

/// Does nothing if the type is registered.
void enroll();

/// Before the library is unloaded: the registration points to its code.
void takeBack();

} // namespace OidType

#endif
