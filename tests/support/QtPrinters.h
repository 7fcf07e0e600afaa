// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_QTPRINTERS_H
#define VIGIL_SUPPORT_QTPRINTERS_H

#include <QString>

#include <ostream>

// How GoogleTest shows Qt's types when an expectation fails. It looks in the type's own namespace, the global
// one.

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

#endif
