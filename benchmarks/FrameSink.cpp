// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "benchmarks/FrameSink.h"

#include <netinet/in.h>
#include <semaphore.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "base/wire/FrameHeader.h"
#include "benchmarks/Clocks.h"

/// Memory of both processes.
struct FrameSink::Shared
{
    std::atomic<std::uint64_t> frames{0};
    std::atomic<std::uint64_t> wanted{0}; // 0: nobody waits
    std::atomic<std::uint64_t> framesOfConnection{0};
    std::atomic<double> firstBytes{0}; // of the connection, as the steady clock's nanoseconds
    std::atomic<double> lastBytes{0};
    std::atomic<bool> closeConnection{false};
    sem_t reached;
};

namespace {

[[noreturn]] void fail(const char* what)
{
    std::perror(what);
    std::exit(1);
}

int listenOnFreePort(std::uint16_t& port)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener, generic, size) != 0 || listen(listener, 1) != 0 ||
        getsockname(listener, generic, &size) != 0)
        fail("cannot listen");
    port = ntohs(address.sin_port);
    return listener;
}

/// Counts frames by their length fields and skips all other bytes.
class FrameCounter
{
public:
    int count(const char* bytes, std::size_t size)
    {
        int frames = 0;
        while (size > 0) {
            const std::size_t step = m_skip > 0 ? skip(size) : readPrefix(bytes, size);
            bytes += step;
            size -= step;
            if (m_skip == 0 && m_prefixBytes == 0)
                ++frames;
        }
        return frames;
    }

private:
    std::size_t skip(std::size_t size)
    {
        const std::size_t step = size < m_skip ? size : m_skip;
        m_skip -= step;
        return step;
    }

    std::size_t readPrefix(const char* bytes, std::size_t size)
    {
        constexpr std::size_t prefixSize = base::FrameHeader::prefixSize;
        const std::size_t missing = prefixSize - m_prefixBytes;
        const std::size_t step = size < missing ? size : missing;
        std::memcpy(m_prefix + m_prefixBytes, bytes, step);
        m_prefixBytes += step;
        if (m_prefixBytes == prefixSize) {
            quint64 length = 0;
            if (base::FrameHeader::readPrefix(QByteArray::fromRawData(m_prefix, prefixSize), length) !=
                base::FrameHeader::Prefix::Good)
                fail("not a frame");
            m_skip = length;
            m_prefixBytes = 0;
        }
        return step;
    }

    char m_prefix[base::FrameHeader::prefixSize] = {};
    std::size_t m_prefixBytes = 0;
    std::size_t m_skip = 0;
};

} // namespace

FrameSink::FrameSink()
{
    void* memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        fail("no shared memory");
    m_shared = new (memory) Shared;
    sem_init(&m_shared->reached, 1, 0);
    const int listener = listenOnFreePort(m_port);
    m_process = fork();
    if (m_process < 0)
        fail("cannot fork");
    if (m_process == 0)
        run(listener);
    close(listener);
}

FrameSink::~FrameSink()
{
    kill(m_process, SIGKILL);
    waitpid(m_process, nullptr, 0);
    munmap(m_shared, sizeof(Shared));
}

std::uint64_t FrameSink::frames() const
{
    return m_shared->frames;
}

void FrameSink::waitForFrames(std::uint64_t total)
{
    m_shared->wanted = total;
    // If all are there already, the one side that takes the number back ends the wait.
    if (m_shared->frames >= total && m_shared->wanted.exchange(0) != 0)
        return;
    while (sem_wait(&m_shared->reached) != 0) {
    }
}

void FrameSink::closeConnection()
{
    m_shared->closeConnection = true;
}

void FrameSink::waitUntilQuiet() const
{
    constexpr int stepMs = 50;
    constexpr int quietSteps = 4;
    std::uint64_t last = frames();
    for (int quiet = 0; quiet < quietSteps; ++quiet) {
        usleep(stepMs * 1000);
        if (std::exchange(last, frames()) != last)
            quiet = 0;
    }
}

double FrameSink::framesPerSecond() const
{
    return static_cast<double>(m_shared->framesOfConnection) * 1e9 /
           (m_shared->lastBytes - m_shared->firstBytes);
}

// --- The other process

void FrameSink::run(int listener)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (;;) {
        const int connection = accept(listener, nullptr, nullptr);
        if (connection < 0)
            fail("cannot accept");
        readConnection(connection);
        close(connection);
    }
}

void FrameSink::readConnection(int connection)
{
    FrameCounter counter;
    std::vector<char> buffer(1 << 18);
    m_shared->closeConnection = false;
    m_shared->framesOfConnection = 0;
    while (!m_shared->closeConnection) {
        const ssize_t size = recv(connection, buffer.data(), buffer.size(), 0);
        if (size <= 0)
            return;
        m_shared->lastBytes = nanoseconds(CLOCK_MONOTONIC);
        if (m_shared->framesOfConnection == 0)
            m_shared->firstBytes = m_shared->lastBytes.load();
        const auto frames =
            static_cast<std::uint64_t>(counter.count(buffer.data(), static_cast<std::size_t>(size)));
        m_shared->framesOfConnection += frames;
        m_shared->frames += frames;
        const std::uint64_t wanted = m_shared->wanted;
        if (wanted != 0 && m_shared->frames >= wanted && m_shared->wanted.exchange(0) != 0)
            sem_post(&m_shared->reached);
    }
}
