// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/QueueOverflow.h"

#include <utility>

void QueueOverflow::add(Publication publication)
{
    if (m_all.bytes() < m_bytesForAll)
        m_all.append(publication);
    else
        m_latest.add(std::move(publication));
}
