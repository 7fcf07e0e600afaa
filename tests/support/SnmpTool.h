// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_SNMPTOOL_H
#define VIGIL_SUPPORT_SNMPTOOL_H

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include "QtPrinters.h"

namespace support {

/// What the tools print where an object is missing.
inline const QString noInstance = QStringLiteral("No Such Instance currently exists at this OID");

/// A manager: runs Net-SNMP's command line tools against one address, with the names of VIGIL-MIB
/// and VIGIL-AGENT-MIB.
///
/// Threads: one with an event loop. The loop runs while a tool runs, so fake applications of the same test
/// can answer. Failure: the exit code is -1 if a tool cannot be run or does not end.
class SnmpTool
{
public:
    struct Result
    {
        int exitCode = -1;
        QString out;
        QString err;
    };

    /// Credentials in the syntax of the tools.
    explicit SnmpTool(const QString& address, const QStringList& credentials = readOnlyCommunity());

    static QStringList community(const QString& name);
    static QStringList readOnlyCommunity() { return community(QStringLiteral("public")); }

    /// For programs of Net-SNMP: they find all modules, and keep their configuration and state in
    /// privateDirectory.
    static QProcessEnvironment environment(const QString& privateDirectory);

    /// program OPTIONS credentials address operands
    Result run(const QString& program, const QStringList& operands, const QStringList& options = {}) const;

    /// The value snmpget prints for a full numeric or symbolic identifier.
    QString get(const QString& id) const;

    /// One SET of (identifier, type, value) triples.
    Result set(const QStringList& triples) const;

    /// The lines "identifier value" of a snmpbulkwalk, numeric.
    QStringList walk(const QString& root, const QString& program = QStringLiteral("snmpbulkwalk")) const;

    /// Waits until get() returns the value.
    bool waitFor(const QString& id, const QString& value) const;

private:
    QString m_address;
    QStringList m_credentials;
};

} // namespace support

#endif
