// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_LOAD_H
#define VIGIL_SUPPORT_LOAD_H

#include <QString>
#include <QtGlobal>

namespace support {

/// True in the long tests, which CTest runs with -C load. Every run of the tests has a short form of them.
inline bool isFullLoad()
{
    return qEnvironmentVariable("VIGIL_LOAD") == QLatin1String("full");
}

} // namespace support

#endif
