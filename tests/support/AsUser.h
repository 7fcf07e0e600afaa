// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_ASUSER_H
#define VIGIL_SUPPORT_ASUSER_H

#include <cstdint>

#include <sys/fsuid.h>
#include <unistd.h>

namespace support {

constexpr std::uint32_t firstUser = 51001; // no user of this host, most likely
constexpr std::uint32_t secondUser = 51002;

/// False for an ordinary user: skip the test then.
inline bool canActForUsers()
{
    return geteuid() == 0;
}

/// While it lives, sockets that this thread creates or accepts belong to another user.
class AsUser
{
public:
    explicit AsUser(std::uint32_t user) : m_previous(static_cast<std::uint32_t>(setfsuid(user))) {}
    ~AsUser() { setfsuid(m_previous); }
    AsUser(const AsUser&) = delete;
    AsUser& operator=(const AsUser&) = delete;

private:
    const std::uint32_t m_previous;
};

} // namespace support

#endif
