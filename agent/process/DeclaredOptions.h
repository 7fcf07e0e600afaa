// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_DECLAREDOPTIONS_H
#define VIGIL_AGENT_PROCESS_DECLAREDOPTIONS_H

#include <QCommandLineOption>
#include <QList>
#include <QString>

#include "agent/core/HostAndPort.h"
#include "agent/core/User.h"
#include "agent/process/Options.h"

namespace agent {

/// The options of the command line with their descriptions, which name the defaults. CommandLine.cpp reads
/// their values.
///
/// Ownership: the options given at construction must outlive it.
class DeclaredOptions
{
public:
    static constexpr char snmpAddress[] = "udp:127.0.0.1:161"; ///< where snmpd serves by default
    /// Of a service that is installed without --standalone: where managers look for SNMP.
    static constexpr char serviceAddress[] = "udp:161,tcp:161";
    static constexpr int longestSeconds = 365 * 86400;
    /// snmpd drops a subagent after a second without a reply. An accepted SET settles for another 20 ms.
    static constexpr int subagentSetTimeoutMs = 979;

    /// An option with a whole number as its value.
    struct Number
    {
        QCommandLineOption option;
        int least;
        int most;
        int& value; ///< where the number goes; holds the default until then
    };

    /// options holds the defaults.
    explicit DeclaredOptions(Options& options) : m_options(options) {}

    /// In the order of --help.
    QList<QCommandLineOption> all() const;

private:
    static constexpr int longestSetTimeoutMs = 60'000;
    static constexpr int mostConnections = 10'000;
    static constexpr int mostCells = 10'000'000;
    static constexpr int leastFrameBytes = 1024;
    static constexpr int leastMegabytes = 8;
    static constexpr int mostMegabytes = 1'000'000;

    static Number numberOption(const QString& name, const QString& unit, const QString& description,
                               int least, int most, int& value);

    Options& m_options; // above the options, whose descriptions name the defaults

public:
    const QCommandLineOption agentx = QCommandLineOption(
        QStringLiteral("agentx"),
        m_options.canJoinMaster
            ? QStringLiteral("Join the snmpd whose AgentX socket is at <address>: a path or "
                             "tcp:host:port. Default: %1.")
                  .arg(m_options.agentxAddress)
            : QStringLiteral("Not available on this system: use --standalone."),
        QStringLiteral("address"));
    const QCommandLineOption standalone = QCommandLineOption(
        QStringLiteral("standalone"),
        QStringLiteral("Serve SNMP on <address> instead of joining snmpd, for example udp:127.0.0.1:1161. "
                       "Separate several addresses by commas. Prefer tcp: for large tables."),
        QStringLiteral("address"));
    const QCommandLineOption subtree = QCommandLineOption(
        QStringLiteral("subtree"),
        QStringLiteral("Serve only the objects at and below <oid>. It is written in numbers and lies at or "
                       "below %1. Default: %2.")
            .arg(toText(enterpriseRoot()), toText(m_options.subtree)),
        QStringLiteral("oid"));
    const QCommandLineOption config = QCommandLineOption(
        QStringLiteral("config"),
        QStringLiteral("With --standalone: read access control and notification receivers from <file>. It "
                       "has the directives of snmpd.conf (rocommunity, rouser, createUser, view ...), with "
                       "object identifiers in numbers. Without a file, this host may read with the "
                       "community \"public\", and no one may write."),
        QStringLiteral("file"));
    const QCommandLineOption checkConfig =
        QCommandLineOption(QStringLiteral("check-config"),
                           QStringLiteral("Check the file of --config and exit: with status 0 if "
                                          "it is correct, else with 1 and the wrong lines."));
    const QCommandLineOption installService = QCommandLineOption(
        QStringLiteral("install-service"),
        QStringLiteral("Windows: install the agent as a service with the other options of this command "
                       "line, and exit. Without --standalone it serves %1. Without --config a commented "
                       "configuration is made. Start it with: sc start vigil-agent.")
            .arg(QLatin1String(serviceAddress)));
    const QCommandLineOption uninstallService =
        QCommandLineOption(QStringLiteral("uninstall-service"),
                           QStringLiteral("Windows: stop the service, remove it, and exit. Its "
                                          "configuration and its state stay."));
    const QCommandLineOption service =
        QCommandLineOption(QStringLiteral("service"),
                           QStringLiteral("Windows: run as the service. --install-service adds this option "
                                          "to the service's command line."));
    const QCommandLineOption show = QCommandLineOption(
        QStringLiteral("show"),
        QStringLiteral(
            "Print the health checks and applications of the agent that runs on the first address of "
            "--standalone, or on %1, and exit: with status 1 if it does not answer.")
            .arg(QLatin1String(snmpAddress)));
    const QCommandLineOption community = QCommandLineOption(
        QStringLiteral("community"),
        QStringLiteral("With --show: ask with this SNMPv2c community. Default: %1.").arg(m_options.community),
        QStringLiteral("name"));
    const QCommandLineOption listen = QCommandLineOption(
        QStringLiteral("listen"),
        QStringLiteral("Accept applications on <host:port>, a loopback address. Port 0 picks a free port. "
                       "Default: %1.")
            .arg(hostAndPort(m_options.listenHost, m_options.listenPort)),
        QStringLiteral("host:port"));
    const QCommandLineOption http = QCommandLineOption(
        QStringLiteral("http"),
        QStringLiteral("Serve a page with all health checks, /metrics for Prometheus, /health and "
                       "/api/checks on <host:port>. Everyone who can reach the address may read, without a "
                       "password; use a loopback address such as 127.0.0.1. Port 0 picks a free port. "
                       "Without this option there is no HTTP."),
        QStringLiteral("host:port"));
    const QCommandLineOption control = QCommandLineOption(
        QStringLiteral("control"),
        platform::knowsLocalPeers()
            ? QStringLiteral(
                  "Let root and the agent's user control the agent with vigilctl, through the local "
                  "socket <path>. Without it, the file \"control\" in the directory of the "
                  "environment variable RUNTIME_DIRECTORY, as systemd sets it, or none.")
            : QStringLiteral("Not available on this system."),
        QStringLiteral("path"));
    const QCommandLineOption allowUsers = QCommandLineOption(
        QStringLiteral("allow-users"),
        QStringLiteral("Accept only applications of <users>: names or numbers, separated by commas. Without "
                       "this option every user of this host may publish."),
        QStringLiteral("users"));
    const Number setTimeout = numberOption(
        QStringLiteral("set-timeout"), QStringLiteral("ms"),
        QStringLiteral("Wait at most <ms> milliseconds for an application to accept or refuse a SET. "
                       "More than %1 needs --standalone.")
            .arg(subagentSetTimeoutMs),
        1, longestSetTimeoutMs, m_options.setTimeoutMs);
    const Number grace = numberOption(
        QStringLiteral("grace"), QStringLiteral("s"),
        QStringLiteral("Serve the last values of a lost application for <s> seconds, then show its health "
                       "checks as UNKNOWN. When it returns, it has the same time to publish its cells again; "
                       "then the missing ones are removed."),
        0, longestSeconds, m_options.graceSeconds);
    const Number forget = numberOption(
        QStringLiteral("forget"), QStringLiteral("s"),
        QStringLiteral("Remove the cells of a lost application after <s> seconds; 0 means never."), 0,
        longestSeconds, m_options.forgetSeconds);
    const QCommandLineOption staleAfter = QCommandLineOption(
        QStringLiteral("stale-after"),
        QStringLiteral("Show a health check as UNKNOWN when its application has not updated it for <s> "
                       "seconds; 0 means never. With \"auto\" the agent learns the rhythm of each check: "
                       "after ten regular updates, four times the longest interval is too long, and at least "
                       "30 seconds. From 0 to %1, or auto. Default: auto.")
            .arg(longestSeconds),
        QStringLiteral("s"));
    const Number maxConnections = numberOption(
        QStringLiteral("max-connections"), QStringLiteral("n"),
        QStringLiteral("Accept at most <n> applications at a time, at most seven eighths of them "
                       "of one user other than root."),
        1, mostConnections, m_options.limits.connections);
    const Number maxCells = numberOption(QStringLiteral("max-cells"), QStringLiteral("n"),
                                         QStringLiteral("Accept at most <n> cells from one application."), 1,
                                         mostCells, m_options.limits.cells);
    const Number maxUserCells = numberOption(
        QStringLiteral("max-user-cells"), QStringLiteral("n"),
        QStringLiteral("Accept at most <n> cells from all applications of one user other than root."), 1,
        mostCells, m_options.limits.userCells);
    const Number maxMemory =
        numberOption(QStringLiteral("max-memory"), QStringLiteral("mb"),
                     QStringLiteral("Use at most <mb> megabytes for the cells, unfinished frames and waiting "
                                    "notifications of all applications. A user other than root has at most "
                                    "as much as remains free for others."),
                     leastMegabytes, mostMegabytes, m_options.limits.megabytes);
    // The two limits in bytes cannot be raised above their defaults.
    const Number maxText = numberOption(QStringLiteral("max-text"), QStringLiteral("n"),
                                        QStringLiteral("Cut texts longer than <n> bytes. Behind snmpd "
                                                       "%1 is the most, and the default.")
                                            .arg(Limits::subagentTextBytes),
                                        1, Limits().textBytes, m_options.limits.textBytes);
    const Number maxFrame =
        numberOption(QStringLiteral("max-frame"), QStringLiteral("n"),
                     QStringLiteral("Disconnect an application that sends a frame longer than <n> bytes."),
                     leastFrameBytes, Limits().frameBytes, m_options.limits.frameBytes);
    const QCommandLineOption stateDirectory = QCommandLineOption(
        QStringLiteral("state-directory"),
        QStringLiteral("Keep lost health checks, the statuses managers know, and the SNMPv3 engine in <dir> "
                       "over a restart. Without it, the directory in the environment variable "
                       "STATE_DIRECTORY, as systemd sets it, or none."),
        QStringLiteral("dir"));
    const QCommandLineOption verbose =
        QCommandLineOption(QStringLiteral("verbose"),
                           QStringLiteral("Also log each connection, each cell and the steps of each SET."));
};

} // namespace agent

#endif
