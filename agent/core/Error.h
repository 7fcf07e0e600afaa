// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_ERROR_H
#define VIGIL_AGENT_CORE_ERROR_H

#include <QString>

#include <utility>

namespace agent {

/// What went wrong, as a sentence for the operator, or nothing. A function returns it in place of throwing,
/// and the compiler warns if the caller ignores it:
///
///     if (const Error error = readLimits(options))
///         return error;
class [[nodiscard]] Error
{
public:
    /// Success.
    Error() = default;

    /// text must not be empty.
    explicit Error(QString text) : m_text(std::move(text)) { Q_ASSERT(!m_text.isEmpty()); }

    /// True if something went wrong.
    explicit operator bool() const { return !m_text.isEmpty(); }

    /// Empty on success.
    const QString& text() const { return m_text; }

private:
    QString m_text;
};

} // namespace agent

#endif
