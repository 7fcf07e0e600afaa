// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// An application whose own classes have names of the library. The executable's symbols come first for the
// dynamic linker, so once the library itself would have called them.

#include <vigil/raii.h>
#include <vigil/vigil.h>

#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "base/wire/Protocol.h"
#include "support/FakeService.h"
#include "support/Publications.h"

using support::cell;

class Connector
{
public:
    Connector();
    virtual ~Connector();
    virtual int plugs() const;
};

Connector::Connector()
{
    ADD_FAILURE() << "the library calls the application's class";
}

Connector::~Connector() = default;

int Connector::plugs() const
{
    return 2;
}

struct ManagementHandler
{
    virtual ~ManagementHandler() = default;
    virtual std::string name() const { return "own"; }
};

struct RangeChangeHandler
{
    virtual ~RangeChangeHandler() = default;
    virtual std::string name() const { return "own"; }
};

enum class RangeKind { Mountains };

namespace {

TEST(OwnNames, TheLibraryCallsItsOwnClassesAndTheApplicationsHandlers)
{
    support::FakeService service;
    qputenv("VIGIL_SERVICE_PORT", QByteArray::number(service.port()));
    EXPECT_EQ(ManagementHandler().name() + RangeChangeHandler().name(), "ownown");
    EXPECT_EQ(static_cast<int>(RangeKind::Mountains), 0);

    std::atomic<int> calls{0};
    vigil::CheckHandle check("app", "hc");
    vigil::ScalarHandle cpu(check, "cpu");
    check.setFunction(1, [&] { ++calls; });
    cpu.setRangeHandler([&](vigil::RangeKind kind, const vigil::Range&) {
        ++calls;
        return kind == vigil::RangeKind::Warning;
    });
    check.update();
    ASSERT_TRUE(service.waitForConnections(1));

    const std::string warning = cell(2, 3, {"app", "hc", "cpu"});
    service.send(base::SnmpIntType, support::encodedInt(cell(5, 1, {"app", "hc"}), 2), base::PlainValue);
    service.send(base::SnmpStringType, support::encodedString(warning, "1:2"), base::Validation);
    const std::string answer = "answer 0 to " + support::set(warning, "1:2");
    EXPECT_TRUE(service.waitForFrame([&](const auto& frame) { return support::describe(frame) == answer; }));
    EXPECT_EQ(calls, 2);
}

} // namespace
