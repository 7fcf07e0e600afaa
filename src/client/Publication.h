// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_PUBLICATION_H
#define VIGIL_CLIENT_PUBLICATION_H

#include <QVariant>

#include "types/OidArcs.h"

/// What the application says about an identifier, or about the tree below it.
struct Publication
{
    enum class Kind { Value, TreeWithdrawal };

    Kind kind;
    vigil::OidArcs oid;
    QVariant value; ///< an int or a QString; invalid: withdrawn
    bool notify;
};

#endif
