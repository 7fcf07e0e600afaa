// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_OID_H
#define VIGIL_OID_H

#include <list>
#include <string>
#include <vector>

#include <vigil/vigil_export.h>

namespace vigil {

/// An SNMP object identifier: an ordered sequence of unsigned 32-bit arcs.
///
/// \code
/// const vigil::Oid table = vigil::Oid::fromStdString("1.3.6.1.4.1.32473.1");
/// const vigil::Oid cell = table + 3 + 7;
/// std::cout << cell.toStdString(); // 1.3.6.1.4.1.32473.1.3.7
/// if (!table.containsChild(cell))
///     std::cout << " is not in the table";
/// \endcode
///
/// Purpose: names the SNMP objects of an application. The default constructor and a failed parse give an Oid
/// without arcs, called invalid. Any first and second arc is accepted. SNMP allows at most 128 arcs: a longer
/// Oid can be built but never reaches a manager.
///
/// Threads: a plain value without locks. Several threads may read one object while none changes it.
///
/// Ownership: every Oid owns its arcs; a copy never shares them.
///
/// Failure: bad text is not an error, see fromStdString(). Only a failed allocation throws (std::bad_alloc).
class VIGIL_EXPORT Oid
{
public:
    Oid();
    Oid(const Oid& other);
    Oid(std::list<unsigned int> arcs);
    ~Oid();

    Oid& operator=(const Oid& other);

    /// The arcs ids[0] to ids[count - 1]. With count 0 the result is empty and ids is not read.
    static Oid fromAsnOid(unsigned int count, unsigned int* ids);

    static Oid fromStdVector(const std::vector<unsigned int>& arcs);

    /// Parses dotted decimal text. A leading dot is accepted. Every piece other than a number from 0 to
    /// 4294967295 is skipped, so "1.x.3" gives 1.3. Text without any arc gives the invalid Oid.
    static Oid fromStdString(const std::string& text);

    /// Adds one arc at the end.
    Oid& append(unsigned int arc);

    /// Adds one arc at the end; the same as append().
    Oid& operator<<(unsigned int arc);

    /// Adds all arcs of other at the end. other may be this object.
    Oid& append(const Oid& other);

    /// A copy of this Oid with the arcs of other, or one arc, at the end.
    Oid operator+(const Oid& other) const;
    Oid operator+(unsigned int arc) const;

    /// Removes prefix from the front. Does nothing unless all arcs of prefix match.
    Oid& removePrefix(const Oid& prefix);

    /// Removes the leading arcs shared with other.
    Oid& removeCommonPrefix(const Oid& other);

    /// The number of arcs.
    int size() const;

    /// True if there is at least one arc.
    bool isValid() const;

    /// The arc at index, counted from 0; 0 if there is no such arc. Linear in index.
    unsigned int at(int index) const;

    /// -1, 0 or 1 if this Oid sorts before, with or after other. Arcs compare unsigned, and a parent sorts
    /// before its children.
    int compare(const Oid& other) const;

    /// True if this Oid is a prefix of other. An Oid contains itself; the empty Oid contains every Oid.
    bool containsChild(const Oid& other) const;

    /// Dotted decimal text without a leading dot; empty for an invalid Oid.
    std::string toStdString() const;

    std::vector<unsigned int> toStdVector() const;

private:
    friend struct OidNodes; // inside the library

    std::list<unsigned int>* m_arcs; // a pointer keeps the class one word wide in every build
};

} // namespace vigil

#endif
