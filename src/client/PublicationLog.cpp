// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/PublicationLog.h"

#include <QString>

using vigil::OidArcs;

/// The entry comes last: without memory for it, nothing refers to what the other blocks have got.
void PublicationLog::append(const Publication& publication)
{
    const Content content = contentOf(publication);
    const OidArcs& arcs = publication.oid;
    const QString text = content == Content::Text ? publication.value.toString() : QString();
    const int number = content == Content::Number ? publication.value.toInt() : 0;
    const Slice arcSlice{m_arcs.size(), arcs.size()};
    const Slice textSlice{m_texts.size(), static_cast<std::size_t>(text.size())};
    m_arcs.insert(m_arcs.end(), arcs.begin(), arcs.end());
    const ushort* units = text.utf16();
    m_texts.insert(m_texts.end(), units, units + text.size());
    m_entries.push_back({content, publication.notify, number, arcSlice, textSlice});
}

PublicationLog::Content PublicationLog::contentOf(const Publication& publication)
{
    if (publication.kind == Publication::Kind::TreeWithdrawal)
        return Content::TreeWithdrawal;
    if (!publication.value.isValid())
        return Content::Withdrawal;
    return publication.value.type() == QVariant::String ? Content::Text : Content::Number;
}

Publication PublicationLog::at(std::size_t index) const
{
    const Entry& entry = m_entries[index];
    const bool isTree = entry.content == Content::TreeWithdrawal;
    return {isTree ? Publication::Kind::TreeWithdrawal : Publication::Kind::Value, arcsOf(entry),
            valueOf(entry), entry.notify};
}

std::size_t PublicationLog::bytes() const
{
    return m_entries.size() * sizeof(Entry) + m_arcs.size() * sizeof(unsigned int) +
           m_texts.size() * sizeof(ushort);
}

OidArcs PublicationLog::arcsOf(const Entry& entry) const
{
    const unsigned int* const first = m_arcs.data() + entry.arcs.first;
    return {first, first + entry.arcs.count};
}

QVariant PublicationLog::valueOf(const Entry& entry) const
{
    if (entry.content == Content::Number)
        return entry.number;
    if (entry.content == Content::Text)
        return QString(reinterpret_cast<const QChar*>(m_texts.data()) + entry.text.first,
                       static_cast<int>(entry.text.count));
    return {};
}
