// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A host with signals and child processes of its own. Its first argument names what it checks; the exit code
// is 0 if the library left it alone.

#include <vigil/vigil.h>

#include <QCoreApplication>
#include <QTcpServer>
#include <QTcpSocket>

#include <dirent.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <thread>

namespace {

constexpr int waitMs = 30000;

/// Counts the connections of the library, as told on its client thread.
class Connections : public vigil::StateInfoCallback
{
public:
    Connections() { vigil::VigilSnmpInterface::instance().registerStateInfoCallback(this); }

    void callbackStateInfo(int state) override { ++(state == 0 ? m_made : m_lost); }

    bool waitForLoss() const
    {
        for (int ms = 0; ms < waitMs && m_lost == 0; ++ms)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return m_lost > 0;
    }

private:
    std::atomic<int> m_made{0};
    std::atomic<int> m_lost{0};
};

vigil::HealthCheck* makeCheck()
{
    vigil::HealthCheck* check = vigil::createHealthCheck("host", "check");
    check->createScalarMetric("metric");
    check->update();
    return check;
}

void onSignal(int) {}

/// The service reads a little and hangs up.
int keepDisposition()
{
    std::signal(SIGPIPE, onSignal);
    vigil::VigilSnmpInterface::instance().init("host");
    const Connections connections;
    vigil::HealthCheck* check = makeCheck();
    if (!connections.waitForLoss())
        return 2;
    check->update();
    check->destroy();
    return std::signal(SIGPIPE, SIG_DFL) == onSignal ? 0 : 1;
}

/// The values for a service without a reader fill the connection, which is then reset. A raised signal would
/// end this process.
int surviveLostPeer()
{
    std::signal(SIGPIPE, SIG_DFL);
    vigil::VigilSnmpInterface& facade = vigil::VigilSnmpInterface::instance();
    facade.init("host");
    const Connections connections;
    const vigil::Oid base = vigil::Oid::fromStdString("1.3.6.1.4.1.32473.9");
    for (unsigned int i = 0; i < 2000; ++i)
        facade.sendValue(base + i, std::string(1000, 'x'), 0);
    const bool wasLost = connections.waitForLoss();
    facade.cleanup();
    return wasLost ? 0 : 2;
}

/// A socket of a Qt host still loses its peer without a signal.
int keepQtSocketsAlive()
{
    int count = 0;
    QCoreApplication application(count, nullptr);
    vigil::HealthCheck* check = makeCheck();
    QTcpServer server;
    QTcpSocket socket;
    server.listen(QHostAddress::LocalHost);
    socket.connectToHost(QHostAddress(QHostAddress::LocalHost), server.serverPort());
    if (!socket.waitForConnected() || !server.waitForNewConnection(waitMs))
        return 2;
    delete server.nextPendingConnection();
    for (int i = 0; i < 100 && socket.state() == QAbstractSocket::ConnectedState; ++i) {
        socket.write("x");
        socket.flush();
    }
    check->destroy();
    return 0;
}

/// Every thread of the process but the first one blocks the signal, so that only sigwait() takes it.
int waitForSignal()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    vigil::HealthCheck* check = makeCheck(); // before the mask, which the library's threads would inherit
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    for (int i = 0; i < 20; ++i) {
        kill(getpid(), SIGTERM);
        int number = 0;
        sigwait(&set, &number);
    }
    check->destroy();
    return 0;
}

int countDescriptors()
{
    int count = 0;
    DIR* directory = opendir("/proc/self/fd");
    for (const dirent* entry = readdir(directory); entry; entry = readdir(directory))
        count += entry->d_name[0] != '.' ? 1 : 0;
    closedir(directory);
    return count;
}

int runChild(const char* program)
{
    const pid_t child = fork();
    if (child == 0) {
        execl(program, program, "count-descriptors", nullptr);
        _exit(100);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WEXITSTATUS(status);
}

int keepDescriptors(const char* program)
{
    const int before = runChild(program);
    vigil::VigilSnmpInterface::instance().init("host");
    const Connections connections;
    vigil::HealthCheck* check = makeCheck();
    int most = 0;
    for (int i = 0; i < 20; ++i)
        most = std::max(most, runChild(program));
    check->destroy();
    return most == before ? 0 : 1;
}

} // namespace

int main(int, char** arguments)
{
    const std::map<std::string, std::function<int()>> ways = {
        {"keep-disposition", keepDisposition},
        {"survive-lost-peer", surviveLostPeer},
        {"keep-qt-sockets", keepQtSocketsAlive},
        {"sigwait", waitForSignal},
        {"count-descriptors", countDescriptors},
        {"keep-descriptors", [&] { return keepDescriptors(arguments[0]); }},
    };
    const int result = ways.at(arguments[1])();
    std::cout << "leaving" << std::endl;
    return result;
}
