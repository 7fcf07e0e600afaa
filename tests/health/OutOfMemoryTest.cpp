// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Every allocation of an operation fails once, alone or with all further ones. The operation may throw
// std::bad_alloc; once there is memory again, a repetition and an update must publish everything.

#include <gmock/gmock.h>

#include <QLoggingCategory>

#include <functional>
#include <map>
#include <new>
#include <string>
#include <vector>

#include <vigil/vigil.h>

#include "support/CheckCells.h"
#include "support/CheckPointer.h"
#include "support/FaultyMemory.h"
#include "support/LibraryTest.h"
#include "support/Load.h"
#include "support/Publications.h"
#include "support/RecordingManagementHandler.h"
#include "support/RecordingRangeHandler.h"

using faults::OutOfMemory;
using support::cell;
using support::set;
using support::unset;
using vigil::HealthCheck;
using vigil::Range;

namespace {

/// The application of one attempt.
struct Application
{
    HealthCheck* check = nullptr;
    vigil::ScalarMetric* scalar = nullptr;
    vigil::ScalarMetric* further = nullptr;
    vigil::ScalarMetric* handled = nullptr; // the one with a handler
    vigil::SimpleMetric* simple = nullptr;
    bool hasManagement = false;
    HealthCheck* furtherCheck = nullptr; // ends once there is memory again
};

class OutOfMemoryIn : public support::LibraryTest
{
protected:
    OutOfMemoryIn()
    {
        // Qt writes debug lines in a destructor, so it ends the process if there is no memory for one.
        QLoggingCategory::setFilterRules(QStringLiteral("vigil.*.debug=false"));
        publications(); // the keeper's
    }

    using Operation = std::function<void(Application&)>;
    using Extent = OutOfMemory::Extent;

    /// Lets every allocation of operation fail in turn.
    void atEveryPoint(const Operation& prepare, const Operation& operation,
                      const std::vector<Extent>& extents = {Extent::OneAllocation, Extent::AllFurther})
    {
        for (const Extent extent : extents) {
            const int step = support::isFullLoad() ? 1 : 7;
            for (int succeeding = 0; attempt(succeeding, extent, prepare, operation); succeeding += step) {
                if (HasFailure())
                    return;
            }
        }
    }

private:
    using Cells = std::map<std::string, std::string>;

    /// False once no allocation has failed.
    bool attempt(int succeeding, Extent extent, const Operation& prepare, const Operation& operation)
    {
        SCOPED_TRACE("after " + std::to_string(succeeding) + " allocations" +
                     (extent == Extent::AllFurther ? ", and all further ones" : ""));
        Application application;
        create(application);
        prepare(application);
        bool hasThrown = false;
        bool hasFailed = false;
        {
            const OutOfMemory fault(succeeding, extent);
            try {
                operation(application);
            } catch (const std::bad_alloc&) {
                hasThrown = true;
            }
            hasFailed = fault.hasFailed();
        }
        if (hasThrown)
            operation(application);
        expectTruth(application);
        end(application);
        return hasFailed;
    }

    void create(Application& application)
    {
        application.check = vigil::createHealthCheck("app", "check");
        application.scalar = application.check->createScalarMetric("scalar");
        application.simple = application.check->createSimpleMetric("simple");
    }

    void expectTruth(Application& application)
    {
        if (application.furtherCheck)
            application.furtherCheck->destroy();
        if (application.check)
            application.check->update();
        read();
        EXPECT_EQ(m_shown, cellsOf(application));
    }

    void read()
    {
        for (const std::string& line : publications()) {
            const std::string oid = line.substr(0, line.find(' '));
            if (line == unset(oid))
                m_shown.erase(oid);
            else
                m_shown[oid] = line;
        }
    }

    void end(Application& application)
    {
        if (application.scalar)
            application.scalar->remove();
        if (application.further)
            application.further->remove();
        application.simple->remove();
        if (application.check)
            application.check->destroy();
        read();
        EXPECT_EQ(m_shown, Cells());
        m_shown.clear();
    }

    static Cells cellsOf(const Application& application)
    {
        support::CheckCells cells;
        if (!application.check)
            return cells.cells();
        cells.addCheck(*application.check);
        if (application.hasManagement)
            cells.addManagement(*application.check);
        for (const vigil::ScalarMetric* metric : {application.scalar, application.further}) {
            if (!metric)
                continue;
            cells.addMetric(*application.check, *metric, metric == application.handled);
            cells.addPerformanceData(*application.check, *metric);
        }
        cells.addMetric(*application.check, *application.simple);
        return cells.cells();
    }

    Cells m_shown;
    const support::CheckPointer m_keeper = support::makeCheck("keeps", "the library running");
};

constexpr auto nothing = [](Application&) {};

TEST_F(OutOfMemoryIn, AnUpdate)
{
    atEveryPoint(nothing, [](Application& application) { application.check->update(); });
}

TEST_F(OutOfMemoryIn, TheChangeOfAUnit)
{
    atEveryPoint(nothing,
                 [](Application& application) { application.scalar->setUnit("a unit of some length"); });
}

TEST_F(OutOfMemoryIn, TheChangeOfARange)
{
    atEveryPoint(nothing, [](Application& application) {
        application.scalar->setWarningRange(Range::CreateRange(1, 2));
        application.scalar->setCriticalRange(Range::CreateInverseRange(3, 4));
    });
}

TEST_F(OutOfMemoryIn, TheCreationOfAMetric)
{
    atEveryPoint(nothing, [](Application& application) {
        application.further = application.check->createScalarMetric("further metric");
    });
}

TEST_F(OutOfMemoryIn, TheRemovalOfAMetric)
{
    atEveryPoint(nothing, [](Application& application) {
        application.scalar->remove();
        application.scalar = nullptr;
    });
}

TEST_F(OutOfMemoryIn, TheRegistrationOfARangeHandler)
{
    support::Recorder recorder;
    support::RecordingRangeHandler handler(recorder);
    atEveryPoint(nothing, [&](Application& application) {
        application.scalar->setRangeChangeHandler(&handler);
        application.handled = application.scalar;
    });
}

TEST_F(OutOfMemoryIn, TheEndOfARangeHandler)
{
    support::Recorder recorder;
    support::RecordingRangeHandler handler(recorder);
    atEveryPoint([&](Application& application) { application.scalar->setRangeChangeHandler(&handler); },
                 [](Application& application) { application.scalar->clearRangeChangeHandler(); });
}

TEST_F(OutOfMemoryIn, TheRegistrationOfAManagementHandler)
{
    support::Recorder recorder;
    support::RecordingManagementHandler handler(recorder);
    atEveryPoint(nothing, [&](Application& application) {
        application.check->registerManagementHandler(&handler);
        application.hasManagement = true;
    });
}

TEST_F(OutOfMemoryIn, TheEndOfAManagementHandler)
{
    support::Recorder recorder;
    support::RecordingManagementHandler handler(recorder);
    atEveryPoint(
        [&](Application& application) {
            application.check->registerManagementHandler(&handler);
            application.hasManagement = true;
        },
        [](Application& application) { application.check->unregisterManagementHandler(); });
}

TEST_F(OutOfMemoryIn, TheCreationOfACheck)
{
    atEveryPoint(nothing, [](Application& application) {
        application.furtherCheck = vigil::createHealthCheck("further", "check");
    });
}

TEST_F(OutOfMemoryIn, TheEndOfACheck)
{
    atEveryPoint([](Application& application) { application.check->update(); },
                 [](Application& application) {
                     application.check->destroy();
                     application.check = nullptr;
                 },
                 {Extent::OneAllocation});
}

TEST_F(OutOfMemoryIn, TheEndOfACheckForGood)
{
    HealthCheck* check = vigil::createHealthCheck("app", "check");
    vigil::ScalarMetric* metric = check->createScalarMetric("metric");
    check->update();
    {
        const OutOfMemory fault(0, Extent::AllFurther);
        check->destroy();
    }
    metric->remove();
}

// --- The first check and the last

/// Without a check that keeps the library running.
class OutOfMemoryAt : public support::LibraryTest
{
protected:
    // Qt warns at each new application object.
    OutOfMemoryAt()
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    }
    ~OutOfMemoryAt() override { qInstallMessageHandler(nullptr); }

    /// The library must still work.
    void expectLife()
    {
        const support::CheckPointer check = support::makeCheck("app", "check");
        check->setDescription("alive");
        check->update();
        settle();
        EXPECT_EQ(publicationsSoFar().back(), set(cell(1, 4, {"app", "check"}), "alive - "));
    }
};

TEST_F(OutOfMemoryAt, TheStart)
{
    bool hasFailed = true;
    for (int succeeding = 0; hasFailed && !HasFailure(); succeeding += support::isFullLoad() ? 1 : 3) {
        SCOPED_TRACE(succeeding);
        HealthCheck* check = nullptr;
        {
            const OutOfMemory fault(succeeding, OutOfMemory::Extent::OneAllocation,
                                    OutOfMemory::Callers::AllButQt);
            check = vigil::createHealthCheck("app", "check");
            hasFailed = fault.hasFailed();
        }
        if (check)
            check->destroy();
        expectLife();
    }
}

TEST_F(OutOfMemoryAt, TheStop)
{
    bool hasFailed = true;
    for (int succeeding = 0; hasFailed && !HasFailure(); succeeding += support::isFullLoad() ? 1 : 3) {
        SCOPED_TRACE(succeeding);
        HealthCheck* check = vigil::createHealthCheck("app", "check");
        {
            const OutOfMemory fault(succeeding, OutOfMemory::Extent::OneAllocation,
                                    OutOfMemory::Callers::AllButQt);
            check->destroy();
            hasFailed = fault.hasFailed();
        }
        expectLife();
    }
}

} // namespace
