// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_PUBLICATIONTEXT_H
#define VIGIL_SUPPORT_PUBLICATIONTEXT_H

#include <QVariant>

#include <cstddef>
#include <string>
#include <vector>

#include <vigil/Oid.h>

#include "client/Publication.h"
#include "client/QueueOverflow.h"
#include "support/Oids.h"

namespace support {

inline Publication publicationOf(const char* identifier, const QVariant& value, bool notify = false)
{
    return {Publication::Kind::Value, oid(identifier).toStdVector(), value, notify};
}

inline Publication withdrawalOfTree(const char* tree)
{
    return {Publication::Kind::TreeWithdrawal, oid(tree).toStdVector(), QVariant(), false};
}

/// "1.2=5", "1.2=5 notify", "1.2 unset" or "1.2 tree".
inline std::string textOf(const Publication& publication)
{
    std::string text = vigil::Oid::fromStdVector(publication.oid).toStdString();
    if (publication.kind == Publication::Kind::TreeWithdrawal)
        text += " tree";
    else if (publication.value.isValid())
        text += "=" + publication.value.toString().toStdString();
    else
        text += " unset";
    return text + (publication.notify ? " notify" : "");
}

/// All its publications in their order.
inline std::vector<std::string> textsOf(const QueueOverflow& overflow)
{
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < overflow.all().size(); ++i)
        texts.push_back(textOf(overflow.all().at(i)));
    for (const Publication& publication : overflow.latest().all())
        texts.push_back(textOf(publication));
    return texts;
}

} // namespace support

#endif
