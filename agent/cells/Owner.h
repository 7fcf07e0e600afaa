// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_OWNER_H
#define VIGIL_AGENT_CELLS_OWNER_H

#include <QString>

#include "agent/cells/Cell.h"
#include "agent/core/User.h"

namespace agent {

/// An application as the owner of cells.
struct Owner
{
    ApplicationId application = 0;
    User user = {};
    QString name = {}; ///< in messages
};

} // namespace agent

#endif
