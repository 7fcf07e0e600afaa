// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A walk asks for one cell after the other, so what a cell costs counts. Times depend on the machine; the
// number of allocations does not.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>

#include "agent/netsnmp/NetSnmp.h"
#include "agent/netsnmp/SnmpEngine.h"
#include "agent/serving/SetCoordinator.h"
#include "agent/serving/SubtreeHandler.h"
#include "support/ManualClock.h"

using agent::ApplicationId;
using agent::CellValue;
using agent::ObjectId;

namespace {

std::size_t allocations = 0;

} // namespace

// Net-SNMP allocates with malloc(), so these are the agent's own.

void* operator new(std::size_t size)
{
    ++allocations;
    void* memory = std::malloc(size == 0 ? 1 : size);
    return memory ? memory : throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace {

constexpr std::size_t allocationsOfCell = 1; // the identifier the manager asks from

struct NoOwners : agent::CellOwners
{
    bool isConnected(ApplicationId) const override { return false; }
    QString nameOf(ApplicationId) const override { return {}; }
    void ask(ApplicationId, int, const ObjectId&, const CellValue&) override {}
    void commit(ApplicationId, const ObjectId&, const CellValue&) override {}
};

/// Net-SNMP's side of a walk, without a socket.
class WalkCost : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_FALSE(engine.initialise());
        ASSERT_FALSE(handler.registerSubtree(root));
        const std::vector<oid> name(root.begin(), root.end());
        netsnmp_subtree* subtree = netsnmp_subtree_find(name.data(), name.size(), nullptr, "");
        ASSERT_TRUE(subtree);
        registration = subtree->reginfo;
    }

    void publish(unsigned int cells)
    {
        for (unsigned int i = 0; i < cells; ++i)
            store.set(cellAt(i), i % 2 == 0 ? CellValue(7) : CellValue(std::string(100, 'x')), 1);
    }

    /// With an index of usual length.
    static ObjectId cellAt(unsigned int number)
    {
        return agent::below(root, {3, 1, 1, 3, 97, 112, 112, 4, 109, 48 + number / 100, 48 + number % 100});
    }

    /// Returns the number of cells.
    std::size_t walk()
    {
        netsnmp_agent_request_info info{};
        info.mode = MODE_GETNEXT;
        netsnmp_variable_list varbind{};
        const std::vector<oid> start(root.begin(), root.end());
        snmp_set_var_objid(&varbind, start.data(), start.size());
        std::size_t cells = 0;
        for (;; ++cells) {
            snmp_set_var_typed_value(&varbind, ASN_NULL, nullptr, 0);
            netsnmp_request_info request{};
            request.requestvb = &varbind;
            netsnmp_call_handlers(registration, &info, &request);
            if (varbind.type == ASN_NULL)
                break;
        }
        snmp_reset_var_buffers(&varbind);
        return cells;
    }

    static inline const ObjectId root = agent::enterpriseRoot();

    support::ManualClock clock;
    agent::CellStore store;
    NoOwners owners;
    agent::SetCoordinator coordinator{store, owners, clock, 1000};
    agent::SnmpEngine engine{{QStringLiteral("udp:127.0.0.1:0"), {}, {}, root}, clock};
    agent::SubtreeHandler handler{store, coordinator};
    netsnmp_handler_registration* registration = nullptr;
};

} // namespace

TEST_F(WalkCost, ACellTakesOneAllocationHoweverManyThereAre)
{
    for (const unsigned int cells : {100U, 2000U}) {
        publish(cells);
        const std::size_t before = allocations;
        EXPECT_EQ(walk(), cells);
        // One more request finds the end.
        EXPECT_LE(allocations - before, allocationsOfCell * (cells + 1) + 5) << "of " << cells << " cells";
    }
}
