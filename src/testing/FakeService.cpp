// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/testing/FakeService.h>

#include <atomic>
#include <ostream>
#include <stdexcept>
#include <vector>

#include "testing/FakeServiceState.h"
#include "testing/Identifier.h"
#include "testing/ServicePort.h"

namespace vigil::test {

namespace {

constexpr int trigger = 2; // a manager's value for management functions 1 to 4

SetResult setRange(FakeServiceState& state, unsigned int column, const std::vector<std::string>& row,
                   const std::string& range)
{
    PublishedCell value;
    value.isText = true;
    value.text = range;
    return state.set(cellIdentifier({metricTable, column}, row), value);
}

} // namespace

class FakeService::State
{
public:
    FakeServiceState service;

private:
    const ServicePort m_port{service.server().port()};
};

FakeService::FakeService() : m_state(new State) {}

FakeService::~FakeService() = default;

int FakeService::port() const
{
    return m_state->service.server().port();
}

FakeService::Milliseconds FakeService::timeout() const
{
    return m_state->service.timeout();
}

void FakeService::setTimeout(Milliseconds timeout)
{
    m_state->service.setTimeout(timeout);
}

int FakeService::nextMark()
{
    static std::atomic<int> last{0}; // of all services: the library sends an old mark to a new one, too
    return ++last;
}

std::string FakeService::markIdentifier()
{
    return fullIdentifier(markTree);
}

bool FakeService::waitForMark(int mark) const
{
    return m_state->service.waitFor([&] { return m_state->service.mark() >= mark; }, timeout());
}

PublishedTable FakeService::snapshot() const
{
    return m_state->service.table();
}

bool FakeService::waitUntil(const std::function<bool(const PublishedTable&)>& condition) const
{
    return waitUntil(condition, timeout());
}

bool FakeService::waitUntil(const std::function<bool(const PublishedTable&)>& condition,
                            Milliseconds timeout) const
{
    return m_state->service.waitForTable(condition, timeout);
}

int FakeService::connections() const
{
    return m_state->service.table().connections();
}

int FakeService::connectionsSoFar() const
{
    int count = 0;
    m_state->service.waitFor(
        [&] {
            count = m_state->service.connectionsSoFar();
            return true;
        },
        Milliseconds(0));
    return count;
}

bool FakeService::waitForConnection() const
{
    return m_state->service.waitFor([&] { return m_state->service.connections() > 0; }, timeout());
}

bool FakeService::waitForDisconnection() const
{
    return m_state->service.waitFor([&] { return m_state->service.connections() == 0; }, timeout());
}

SetResult FakeService::setWarningRange(const std::string& firstKey, const std::string& secondKey,
                                       const std::string& metric, const std::string& range)
{
    return setRange(m_state->service, warningColumn, {firstKey, secondKey, metric}, range);
}

SetResult FakeService::setCriticalRange(const std::string& firstKey, const std::string& secondKey,
                                        const std::string& metric, const std::string& range)
{
    return setRange(m_state->service, criticalColumn, {firstKey, secondKey, metric}, range);
}

SetResult FakeService::triggerFunction(const std::string& firstKey, const std::string& secondKey, int number)
{
    if (number < 1 || number > 5)
        throw std::out_of_range("management functions have the numbers 1 to 5");
    PublishedCell value;
    value.isText = number == 5; // which an empty text triggers
    value.number = value.isText ? 0 : trigger;
    return m_state->service.set(
        cellIdentifier({functionTable, static_cast<unsigned int>(number)}, {firstKey, secondKey}), value);
}

SetResult FakeService::setNumber(const std::string& identifier, int number)
{
    PublishedCell value;
    value.number = number;
    return m_state->service.set(identifier, value);
}

SetResult FakeService::setText(const std::string& identifier, const std::string& text)
{
    PublishedCell value;
    value.isText = true;
    value.text = text;
    return m_state->service.set(identifier, value);
}

void FakeService::stall()
{
    m_state->service.server().stopReading();
}

void FakeService::resume()
{
    m_state->service.server().resumeReading();
}

void FakeService::breakConnections()
{
    m_state->service.server().closeAll();
}

void FakeService::goAway()
{
    m_state->service.server().refuseConnections();
    m_state->service.server().closeAll();
}

void FakeService::comeBack()
{
    m_state->service.server().acceptConnections();
}

std::ostream& operator<<(std::ostream& out, SetResult result)
{
    static constexpr const char* names[] = {"Accepted", "Refused", "NoSuchCell", "NoReply"};
    return out << names[static_cast<int>(result)];
}

std::ostream& operator<<(std::ostream& out, const FakeService& service)
{
    return out << service.snapshot();
}

} // namespace vigil::test
