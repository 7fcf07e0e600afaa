// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_ENVIRONMENTVARIABLE_H
#define VIGIL_SUPPORT_ENVIRONMENTVARIABLE_H

#include <QByteArray>
#include <QtGlobal>

namespace support {

/// Sets an environment variable of the process while the object lives.
///
/// Threads: no other thread may read the environment meanwhile.
class EnvironmentVariable
{
public:
    EnvironmentVariable(const char* name, const QByteArray& value)
        : m_name(name), m_wasSet(qEnvironmentVariableIsSet(name)), m_previous(qgetenv(name))
    {
        qputenv(name, value);
    }

    ~EnvironmentVariable()
    {
        if (m_wasSet)
            qputenv(m_name, m_previous);
        else
            qunsetenv(m_name);
    }

    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    const char* const m_name;
    const bool m_wasSet;
    const QByteArray m_previous;
};

} // namespace support

#endif
