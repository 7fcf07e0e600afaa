// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/Oid.h>

#include <QString>
#include <QStringList>

#include <algorithm>
#include <iterator>

namespace vigil {

Oid::Oid() : m_arcs(new std::list<unsigned int>) {}

Oid::Oid(const Oid& other) : m_arcs(new std::list<unsigned int>(*other.m_arcs)) {}

Oid::Oid(std::list<unsigned int> arcs) : m_arcs(new std::list<unsigned int>(std::move(arcs))) {}

Oid::~Oid()
{
    delete m_arcs;
    m_arcs = nullptr;
}

Oid& Oid::operator=(const Oid& other)
{
    if (this != &other)
        *m_arcs = *other.m_arcs;
    return *this;
}

Oid Oid::fromAsnOid(unsigned int count, unsigned int* ids)
{
    Oid oid;
    if (count > 0)
        oid.m_arcs->assign(ids, ids + count);
    return oid;
}

Oid Oid::fromStdVector(const std::vector<unsigned int>& arcs)
{
    Oid oid;
    oid.m_arcs->assign(arcs.begin(), arcs.end());
    return oid;
}

Oid Oid::fromStdString(const std::string& text)
{
    Oid oid;
    const QStringList pieces = QString::fromStdString(text).split(QLatin1Char('.'));
    for (const QString& piece : pieces) {
        bool isNumber = false;
        const unsigned int arc = piece.toUInt(&isNumber);
        if (isNumber)
            oid.append(arc);
    }
    return oid;
}

Oid& Oid::append(unsigned int arc)
{
    m_arcs->push_back(arc);
    return *this;
}

Oid& Oid::operator<<(unsigned int arc)
{
    return append(arc);
}

Oid& Oid::append(const Oid& other)
{
    std::list<unsigned int> copy(*other.m_arcs); // copied first, since other may be this very object
    m_arcs->splice(m_arcs->end(), copy);
    return *this;
}

Oid Oid::operator+(const Oid& other) const
{
    Oid sum(*this);
    sum.append(other);
    return sum;
}

Oid Oid::operator+(unsigned int arc) const
{
    Oid sum(*this);
    sum.append(arc);
    return sum;
}

Oid& Oid::removePrefix(const Oid& prefix)
{
    if (prefix.containsChild(*this))
        m_arcs->erase(m_arcs->begin(), std::next(m_arcs->begin(), prefix.size()));
    return *this;
}

Oid& Oid::removeCommonPrefix(const Oid& other)
{
    const auto firstDifference =
        std::mismatch(m_arcs->begin(), m_arcs->end(), other.m_arcs->begin(), other.m_arcs->end()).first;
    m_arcs->erase(m_arcs->begin(), firstDifference);
    return *this;
}

int Oid::size() const
{
    return static_cast<int>(m_arcs->size());
}

bool Oid::isValid() const
{
    return !m_arcs->empty();
}

unsigned int Oid::at(int index) const
{
    if (index < 0 || index >= size())
        return 0;
    return *std::next(m_arcs->begin(), index);
}

int Oid::compare(const Oid& other) const
{
    const auto [mine, theirs] =
        std::mismatch(m_arcs->begin(), m_arcs->end(), other.m_arcs->begin(), other.m_arcs->end());
    const bool iEnded = mine == m_arcs->end();
    const bool theyEnded = theirs == other.m_arcs->end();
    if (iEnded || theyEnded)
        return static_cast<int>(theyEnded) - static_cast<int>(iEnded);
    return *mine < *theirs ? -1 : 1;
}

bool Oid::containsChild(const Oid& other) const
{
    const auto firstDifference =
        std::mismatch(m_arcs->begin(), m_arcs->end(), other.m_arcs->begin(), other.m_arcs->end()).first;
    return firstDifference == m_arcs->end();
}

std::string Oid::toStdString() const
{
    std::string text;
    for (const unsigned int arc : *m_arcs) {
        if (!text.empty())
            text += '.';
        text += std::to_string(arc);
    }
    return text;
}

std::vector<unsigned int> Oid::toStdVector() const
{
    return {m_arcs->begin(), m_arcs->end()};
}

} // namespace vigil
