// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The agent's receive path without sockets and SNMP: from the bytes of applications to the served cells.
//
// The first byte of the input selects its meaning:
//
// - even: the rest is the stream of one application, received in pieces of this number of bytes;
// - odd: the rest is a list of steps. The first byte of a step, modulo 8, selects it: 6 advances the clock, 7
//   loses the application and connects the next one, all others send a frame with a valid header.

#include <algorithm>
#include <memory>

#include "agent/applications/ApplicationStream.h"
#include "agent/applications/CellLimits.h"
#include "agent/cells/ServedCells.h"
#include "agent/cells/StatusTable.h"
#include "fuzz/Fuzzer.h"
#include "fuzz/Input.h"
#include "support/ManualClock.h"

using agent::ApplicationId;
using agent::CellValue;
using agent::ObjectId;
using fuzz::Input;
using fuzz::require;

namespace {

agent::Limits smallLimits()
{
    agent::Limits limits;
    limits.cells = 20;
    limits.textBytes = 50;
    limits.frameBytes = 5000;
    return limits;
}

agent::ServedCells::Settings smallSettings()
{
    agent::ServedCells::Settings settings;
    settings.lost.graceMs = 10;
    settings.lost.forgetMs = 200;
    settings.staleAfterMs = 50;
    settings.lost.maxApplications = 2;
    settings.lost.maxCells = 1'000'000;
    return settings;
}

/// The agent without sockets and SNMP: one application after the other.
class Receiver : public agent::ApplicationStream::Receiver
{
public:
    Receiver() { connect(); }

    void receive(const QByteArray& bytes)
    {
        if (m_stream->receive(bytes))
            reconnect();
    }

    void sendFrame(int dataType, int callbackId, const QByteArray& payload)
    {
        base::FrameHeader header;
        header.dataType = static_cast<qint16>(dataType);
        header.clientCallbackId = callbackId;
        header.messageCounter = m_stream->frames() + 1;
        receive(header.toBytes(payload.size()) + payload);
    }

    void reconnect()
    {
        m_cells.lose({m_application});
        m_clock.advance(0); // the next turn of the event loop removes the cells of a loss without room
        connect();
    }

    void letTimePass(int ms) { m_clock.advance(ms); }

    void handleValue(const ObjectId& id, const CellValue& value, bool) override
    {
        if (agent::CellLimits::checkIdentifier(id))
            m_cells.unset(m_application, id);
        else if (!m_cellLimits.checkCount(m_application, id))
            m_cells.publish(m_application, id, m_cellLimits.cutText(value));
    }

    void handleUnset(const ObjectId& tree) override { m_cells.unset(m_application, tree); }
    void handleAnswer(int, int) override {}

    /// Walks as a manager does. The promises hold for any input.
    void checkCells() const
    {
        size_t count = 0;
        std::map<ApplicationId, size_t> countByOwner;
        ObjectId last;
        for (const auto* entry = m_store.findNext({}); entry; entry = m_store.findNext(last)) {
            const auto& [id, cell] = *entry;
            require(last < id && id.size() <= agent::maxArcs);
            require(!cell.cover || agent::healthTable::positionOf(id) || agent::resultTable().positionOf(id));
            const std::string* text = std::get_if<std::string>(&cell.value);
            require(!text || text->size() <= static_cast<size_t>(m_limits.textBytes));
            last = id;
            ++count;
            ++countByOwner[cell.owner];
        }
        require(count == m_store.size() && countByOwner.size() <= smallSettings().lost.maxApplications + 1);
        for (const auto& [owner, cells] : countByOwner)
            require(cells == m_store.countOf(owner) && cells <= static_cast<size_t>(m_limits.cells));
    }

private:
    void connect()
    {
        ++m_application;
        m_stream = std::make_unique<agent::ApplicationStream>(*this, m_limits.frameBytes);
    }

    const agent::Limits m_limits = smallLimits();
    support::ManualClock m_clock;
    agent::CellStore m_store;
    agent::ServedCells m_cells{m_store, m_clock, smallSettings()};
    const agent::CellLimits m_cellLimits{m_store, m_limits};
    ApplicationId m_application = 0;
    std::unique_ptr<agent::ApplicationStream> m_stream;
};

void feedBytes(Receiver& receiver, Input& input, int pieceSize)
{
    while (!input.isAtEnd())
        receiver.receive(input.take(pieceSize));
}

void feedSteps(Receiver& receiver, Input& input)
{
    while (!input.isAtEnd()) {
        const int step = input.byte() % 8;
        if (step == 6) {
            receiver.letTimePass(input.byte());
        } else if (step == 7) {
            receiver.reconnect();
        } else {
            const int callbackId = input.byte();
            const int size = input.byte();
            receiver.sendFrame(step, callbackId, input.take(size));
        }
        receiver.checkCells();
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    Receiver receiver;
    const int kind = input.byte();
    if (kind % 2 == 0)
        feedBytes(receiver, input, std::max(kind, 1));
    else
        feedSteps(receiver, input);
    receiver.checkCells();
    receiver.letTimePass(1000);
    receiver.checkCells();
    return 0;
}
