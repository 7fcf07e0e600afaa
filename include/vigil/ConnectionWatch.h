// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CONNECTIONWATCH_H
#define VIGIL_CONNECTIONWATCH_H

#include <functional>
#include <memory>
#include <utility>

#include <vigil/StateInfoCallback.h>
#include <vigil/VigilSnmpInterface.h>
#include <vigil/detail/HandleSupport.h>

namespace vigil {
namespace detail {

/// The content of a ConnectionWatch.
class OwnedWatch : public Owned, private StateInfoCallback
{
public:
    explicit OwnedWatch(std::function<void(bool)> function) : m_function(std::move(function)) {}

    void begin() { VigilSnmpInterface::instance().registerStateInfoCallback(this); }

private:
    void callbackStateInfo(int state) override
    {
        if (!isMuted() && m_function)
            m_function(state == 0);
    }

    bool end() noexcept override
    {
        return untilMemory([this] { VigilSnmpInterface::instance().deregisterStateInfoCallback(this); });
    }

    const std::function<void(bool)> m_function;
};

} // namespace detail

/// Calls a function at each connect to the local SNMP service, and at each loss of the connection.
///
/// \code
/// std::atomic<bool> isConnected{false};
/// vigil::CheckHandle check("shop", "orders"); // starts the library
/// vigil::ConnectionWatch watch([&](bool connected) { isConnected = connected; });
/// \endcode
///
/// Purpose: lets an application show that managers cannot see its health right now. Create it after the first
/// check of the process, since the library forgets it when it stops.
///
/// Threads: the function runs on the library's client thread and must return quickly. See CheckHandle for all
/// else.
///
/// Failure: the constructor throws std::logic_error inside a callback. What the function throws is written to
/// the library's log.
class ConnectionWatch : public detail::Handle<detail::OwnedWatch>
{
public:
    ConnectionWatch() noexcept = default;

    explicit ConnectionWatch(std::function<void(bool isConnected)> function)
        : Handle(begin(std::move(function)))
    {}

private:
    static std::shared_ptr<detail::OwnedWatch> begin(std::function<void(bool)> function)
    {
        detail::refuseInsideCallback("a connection was watched");
        auto watch = std::make_shared<detail::OwnedWatch>(std::move(function));
        watch->begin();
        return watch;
    }
};

} // namespace vigil

#endif
