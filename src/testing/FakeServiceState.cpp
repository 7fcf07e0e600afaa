// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "testing/FakeServiceState.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <iostream>
#include <utility>

#include "testing/Identifier.h"

namespace vigil::test {

namespace {

void removeTree(PublishedTable::Cells& cells, const std::string& tree)
{
    cells.erase(tree);
    // In the order of texts a slash follows a dot, so all descendants are between the two.
    cells.erase(cells.lower_bound(tree + '.'), cells.lower_bound(tree + '/'));
}

/// A sum with a longer time-out could overflow.
std::chrono::milliseconds limited(std::chrono::milliseconds timeout)
{
    return (std::min)(timeout, std::chrono::milliseconds(std::chrono::hours(24 * 365)));
}

} // namespace

FakeServiceState::Milliseconds FakeServiceState::timeout() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_timeout;
}

void FakeServiceState::setTimeout(Milliseconds timeout)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_timeout = timeout;
}

PublishedTable FakeServiceState::table() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return tableUnderLock();
}

PublishedTable FakeServiceState::tableUnderLock() const
{
    PublishedTable::Cells all;
    for (const auto& connection : m_cells)
        all.insert(connection.second.begin(), connection.second.end());
    return PublishedTable(std::move(all), connections());
}

bool FakeServiceState::waitFor(const std::function<bool()>& condition, Milliseconds timeout) const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, limited(timeout), condition);
}

bool FakeServiceState::waitForTable(const std::function<bool(const PublishedTable&)>& condition,
                                    Milliseconds timeout) const
{
    const auto deadline = std::chrono::steady_clock::now() + limited(timeout);
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        const unsigned int judged = m_version;
        const PublishedTable current = tableUnderLock();
        lock.unlock();
        if (condition(current))
            return true;
        lock.lock();
        if (!m_changed.wait_until(lock, deadline, [&] { return m_version != judged; }))
            return false;
    }
}

// --- The server's thread

template <typename Change>
void FakeServiceState::change(Change apply)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    apply();
    ++m_version;
    m_changed.notify_all();
}

void FakeServiceState::connected(int connection)
{
    change([&] {
        m_cells[connection];
        ++m_connectionsSoFar;
    });
}

void FakeServiceState::disconnected(int connection)
{
    change([&] { m_cells.erase(connection); });
}

void FakeServiceState::received(const std::string&, const std::vector<Frame>& frames)
{
    change([&] {
        for (const Frame& frame : frames) {
            try {
                apply(frame);
            } catch (const std::exception& error) {
                std::cerr << "The fake service has received a bad record: " << error.what() << std::endl;
            }
        }
    });
}

void FakeServiceState::apply(const Frame& frame)
{
    const Record record = decode(frame);
    if (record.isReply)
        m_replies[record.request] = record.errorStatus;
    else if (record.identifier == markTree)
        m_mark = (std::max)(m_mark, record.number);
    else
        publish(m_cells[frame.connection], record, frame.callbackId == ValueAndNotify);
}

void FakeServiceState::publish(PublishedTable::Cells& cells, const Record& record, bool isNotification)
{
    const std::string identifier = fullIdentifier(record.identifier);
    if (record.kind == Record::Kind::Withdrawal)
        return removeTree(cells, identifier);
    PublishedCell& cell = cells[identifier];
    cell.isText = record.kind == Record::Kind::Text;
    cell.number = record.number;
    cell.text = record.text;
    cell.notifications += isNotification ? 1 : 0;
}

// --- SETs

int FakeServiceState::ownerOf(const std::string& identifier) const
{
    const auto owner = std::find_if(m_cells.begin(), m_cells.end(), [&](const auto& connection) {
        return connection.second.count(identifier) > 0;
    });
    return owner == m_cells.end() ? 0 : owner->first;
}

SetResult FakeServiceState::set(const std::string& identifier, const PublishedCell& value)
{
    int owner = 0;
    waitFor(
        [&] {
            owner = ownerOf(identifier);
            return true;
        },
        Milliseconds(0));
    if (owner == 0)
        return SetResult::NoSuchCell;
    Record record;
    record.kind = value.isText ? Record::Kind::Text : Record::Kind::Number;
    record.identifier = relativeIdentifier(identifier);
    record.number = value.number;
    record.text = value.text;
    const SetResult result = ask(owner, record);
    if (result != SetResult::Accepted)
        return result;
    commit(owner, record);
    // The library handles records in order: once it replies to a further request, the commit is done.
    Record last;
    last.identifier = markTree;
    return ask(owner, last) == SetResult::NoReply ? SetResult::NoReply : SetResult::Accepted;
}

SetResult FakeServiceState::ask(int connection, Record request)
{
    waitFor(
        [&] {
            request.request = ++m_lastRequest;
            return true;
        },
        Milliseconds(0));
    Frame frame;
    frame.dataType = static_cast<std::int16_t>(dataTypeOf(request));
    frame.callbackId = Validation;
    frame.payload = encode(request);
    m_server.send(frame, connection);
    SetResult result = SetResult::NoReply;
    waitFor(
        [&] {
            const auto reply = m_replies.find(request.request);
            if (reply == m_replies.end())
                return m_cells.count(connection) == 0;
            result = reply->second == 0 ? SetResult::Accepted : SetResult::Refused;
            m_replies.erase(reply);
            return true;
        },
        timeout());
    return result;
}

/// The value is in the table at once; the application may publish another one.
void FakeServiceState::commit(int connection, const Record& record)
{
    change([&] {
        const auto cells = m_cells.find(connection);
        if (cells != m_cells.end())
            publish(cells->second, record, false);
    });
    Frame frame;
    frame.dataType = static_cast<std::int16_t>(dataTypeOf(record));
    frame.callbackId = PlainValue;
    frame.payload = encode(record);
    m_server.send(frame, connection);
}

} // namespace vigil::test
