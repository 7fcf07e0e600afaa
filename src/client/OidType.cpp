// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/OidType.h"

#include <QMetaType>

#include <atomic>

#include <vigil/Oid.h>

using vigil::Oid;

namespace {

constexpr const char* oidTypeName = "Oid";

std::atomic<bool> isOwn{false};

} // namespace

void OidType::enroll()
{
    if (QMetaType::type(oidTypeName) != QMetaType::UnknownType)
        return;
    qRegisterMetaType<Oid>(oidTypeName);
    isOwn = true;
}

void OidType::takeBack()
{
    if (isOwn.exchange(false))
        QMetaType::unregisterType(QMetaType::type(oidTypeName));
}
