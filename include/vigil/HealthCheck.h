// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HEALTHCHECK_H
#define VIGIL_HEALTHCHECK_H

#include <string>
#include <vector>

#include <vigil/ManagementHandler.h>
#include <vigil/Result.h>
#include <vigil/vigil_export.h>

namespace vigil {

class ScalarMetric;
class SimpleMetric;

/// One aspect of the application's health, judged by its metrics.
///
/// \code
/// vigil::HealthCheck* check = vigil::createHealthCheck("shop", "database");
/// check->setDescription("Database");
/// vigil::SimpleMetric* server = check->createSimpleMetric("server");
///
/// server->setStatus(vigil::HealthStatus::Warning);
/// server->setInfo("slow replies");
/// check->update(); // publishes WARNING and "Database - server is WARNING, slow replies."
///
/// server->remove();
/// check->destroy();
/// \endcode
///
/// Purpose: collects metrics. update() evaluates all of them, takes the worst status (OK < UNKNOWN < WARNING
/// < CRITICAL) and publishes the outcome as rows of the SNMP tables. Until the first update() the check is
/// UNKNOWN with an empty summary.
///
/// Keys: the two keys identify the check. Keys and metric name are part of the object identifier of each row,
/// one arc per byte. An identifier has at most 128 arcs, so both keys and the name may have about 110 bytes
/// together; a manager cannot see rows with longer ones. Prefer ASCII: bytes from 0x80 up become the arcs
/// 4294967168 to 4294967295. Some managers turn these arcs back into text; others show dots and do not find
/// the row by its name.
///
/// Threads: several threads may create, use and destroy checks of their own. One thread at a time may be
/// inside the operations of a check and its metrics. Handlers are called on the library's client thread. It
/// blocks all signals; threads and child processes started in a handler inherit this.
///
/// Ownership: createHealthCheck() creates a check and destroy() ends it; never delete it. Metrics outlive the
/// check unless removed. The first check of the process starts the library's threads, the last one stops
/// them.
///
/// Memory: the library remembers every identifier it has published until it stops, because it withdraws
/// removed cells again after each reconnect. A metric costs a few kB even after remove(). So do not create
/// one metric per job or request: create a fixed set, such as one for each worker or queue, and reuse it.
///
/// Process: the library changes no signal disposition, and children inherit none of its descriptors. In a
/// child forked while a check lives every call does nothing. A program that becomes a daemon creates its
/// first check in the child, or destroys all checks before the fork. If no thread, descriptor or memory
/// is left, the log says so, and nothing is published until all checks are destroyed and a new one is
/// created. Standard descriptors that the host has closed become the null device. While a check lives, the
/// host must not close descriptors it did not open, nor lower the limit of descriptors below 16.
///
/// Hosts with Qt or GLib: a process without a QCoreApplication gets one, in a thread of the library, while a
/// check lives. A host best creates its own before its first check, or while no check lives. If it creates it
/// beside a check, Qt warns on stderr, the library says so in its log and goes on beside the new object; a
/// debug build of Qt ends the process instead. The host may destroy its object while checks live. A
/// host may run GLib's main loop: the library never serves it.
///
/// Failure: no operation reports an error. Without an SNMP service the library keeps the values and publishes
/// them once it connects; beside a busy one it keeps the last value of each cell until the service reads.
/// If memory runs out, an operation may throw std::bad_alloc with a part of its work done: repeat it.
/// destroy() does not throw; it waits up to a second for memory, and then leaves its rows until the library
/// stops. Only destroy() of the last check waits for the network, up to 8 seconds, and operations that change
/// or remove a handler may wait for a callback in progress and for a part of the replay after a reconnect.
/// Inside a callback of the library, createSimpleMetric(), createScalarMetric(), registerManagementHandler(),
/// unregisterManagementHandler() and destroy() only write an error line to the log.
class VIGIL_EXPORT HealthCheck
{
public:
    HealthCheck();
    HealthCheck(const HealthCheck& other);
    HealthCheck& operator=(const HealthCheck& other);

    /// Create a metric and announce its row. The name is UTF-8. If the name is taken, the check evaluates
    /// only the newer metric. Range handlers belong to the name: creating the newer metric switches off the
    /// handler of the older one, the handler set last is called, and clearing it through either metric
    /// switches it off. Both return null inside a callback of the library.
    virtual SimpleMetric* createSimpleMetric(const std::string& name) = 0;
    virtual ScalarMetric* createScalarMetric(const std::string& name) = 0;

    /// The arguments of createHealthCheck(), UTF-8.
    virtual std::string getFirstKey() const = 0;
    virtual std::string getSecondKey() const = 0;

    /// The start of the summary, UTF-8. The next update() publishes it.
    virtual void setDescription(const std::string& description) = 0;
    virtual std::string getDescription() const = 0;

    /// Publishes the management row and routes the manager's triggers to handler; it replaces an earlier one.
    /// The check does not own it: unregister it before destroying it. With null the triggers do nothing.
    virtual void registerManagementHandler(ManagementHandler* handler) = 0;

    /// Waits for a call in progress; afterwards the handler is never called again. The row stays.
    virtual void unregisterManagementHandler() = 0;

    /// Evaluates all metrics in the order of their names and publishes the outcome. The library has no timer:
    /// call this as often as the tables should be refreshed.
    virtual void update() = 0;

    /// Status and summary (UTF-8) of the last update(). The summary lists every problem: 1500 problems make
    /// about 64 kB. SNMP carries at most 65535 bytes in one text; managers do not see the rest. Split such a
    /// check.
    virtual HealthStatus getStatus() const = 0;
    virtual std::string getSummary() const = 0;

    /// Replaces the contents of out with the results of the last update(), in the order of the metric names.
    virtual void getResults(std::vector<Result>& out) const = 0;

    /// Withdraws all rows of the check and deletes it; the pointer is invalid afterwards. With the last check
    /// the library stops: it sends what is pending while the service reads, and takes at most 8 seconds
    /// unless a callback in progress takes longer.
    virtual void destroy() = 0;

protected:
    virtual ~HealthCheck();
};

/// Creates a health check; the first one of the process also starts the library. The keys are UTF-8. Returns
/// null if memory runs out; if only its row cannot be published, the first update publishes it. Two checks
/// must not have the same keys: they would share their rows, and the first one to be destroyed would withdraw
/// the rows and the management handler of the other.
///
/// Threads: as for HealthCheck. Ownership: end the check with HealthCheck::destroy().
VIGIL_EXPORT HealthCheck* createHealthCheck(const std::string& firstKey, const std::string& secondKey);

} // namespace vigil

#endif
