// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_STATEFILE_H
#define VIGIL_AGENT_CORE_STATEFILE_H

#include <QString>
#include <QStringList>

#include <utility>

#include "agent/core/Error.h"

namespace agent {

/// A small text file the agent keeps over a restart. Its first line names the kind of the file, its last line
/// is "end", so a foreign or shortened file is noticed.
class StateFile
{
public:
    /// An empty path keeps nothing.
    StateFile(QString path, QString kind) : m_path(std::move(path)), m_kind(std::move(kind)) {}

    /// The lines in between. No file means no lines.
    Error read(QStringList& lines) const;

    /// Replaces the file as a whole: a crash leaves the old or the new one.
    Error write(const QStringList& lines) const;

    /// The message about unusable content.
    Error damaged(const QString& why) const;

    /// The same about some of its lines. first is the number of the first one, from 1.
    Error partlyDamaged(int lines, int first) const;

private:
    QString firstLine() const { return QStringLiteral("vigil-agent-%1-1").arg(m_kind); }

    const QString m_path;
    const QString m_kind;
};

} // namespace agent

#endif
