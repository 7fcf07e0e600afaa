// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "vigilctl/Printable.h"

namespace vigilctl {

QString printable(const QString& text)
{
    QString printable;
    for (const QChar character : text) {
        const QChar::Category category = character.category();
        if (category != QChar::Other_Control && category != QChar::Other_Format)
            printable += character;
    }
    return printable;
}

} // namespace vigilctl
