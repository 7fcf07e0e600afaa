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
/// Purpose: names the SNMP objects that a program publishes or listens to. An Oid without arcs is "invalid";
/// it is what the default constructor and a failed parse give. No rule is imposed on the first or second arc.
/// Note that SNMP carries at most 128 arcs in one identifier; longer ones can be built but never reach a
/// manager.
///
/// Threads: a plain value without locks. Different objects may be used on different threads; one object may
/// be read by several threads as long as none changes it.
///
/// Ownership: every Oid owns its arcs; a copy is deep and never shares them.
///
/// Failure: bad text is not an error, see fromStdString(). Only allocation failure throws (std::bad_alloc).
class VIGIL_EXPORT Oid
{
public:
    Oid();
    Oid(const Oid& other);
    Oid(std::list<unsigned int> arcs);
    ~Oid();

    Oid& operator=(const Oid& other);

    /// The arcs ids[0] to ids[count - 1], in order. With count 0 the result is empty and ids is not read.
    static Oid fromAsnOid(unsigned int count, unsigned int* ids);

    static Oid fromStdVector(const std::vector<unsigned int>& arcs);

    /// Parses dotted decimal text. A leading dot is accepted. A piece that is not a number between 0 and
    /// 4294967295 is skipped and parsing goes on, so "1.x.3" gives 1.3; check isValid() to learn of text
    /// without any arc.
    static Oid fromStdString(const std::string& text);

    /// Adds one arc at the end.
    Oid& append(unsigned int arc);

    /// Adds one arc at the end; the same as append().
    Oid& operator<<(unsigned int arc);

    /// Adds all arcs of other at the end. Appending an Oid to itself doubles it.
    Oid& append(const Oid& other);

    Oid operator+(const Oid& other) const;
    Oid operator+(unsigned int arc) const;

    /// Removes prefix from the front. Does nothing unless all arcs of prefix match.
    Oid& removePrefix(const Oid& prefix);

    /// Removes the longest run of leading arcs that this Oid has in common with other.
    Oid& removeCommonPrefix(const Oid& other);

    /// The number of arcs.
    int size() const;

    /// True when there is at least one arc.
    bool isValid() const;

    /// The arc at index, counted from 0; 0 when there is no such arc. Takes time proportional to index.
    unsigned int at(int index) const;

    /// -1, 0 or 1 in the lexicographic order of SNMP: arcs compare unsigned, a parent precedes its children.
    int compare(const Oid& other) const;

    /// True when this Oid is a prefix of other. An Oid contains itself; the empty Oid contains every Oid.
    bool containsChild(const Oid& other) const;

    /// Dotted decimal text without a leading dot; empty for the invalid Oid.
    std::string toStdString() const;

    std::vector<unsigned int> toStdVector() const;

private:
    std::list<unsigned int>* m_arcs; // a pointer, so that the class stays one word wide in every build
};

} // namespace vigil

#endif
