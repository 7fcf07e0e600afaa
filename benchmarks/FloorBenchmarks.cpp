// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The floors and the peer: what the library stands on, and what another library of its kind costs.

#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <prometheus/gauge.h>
#include <prometheus/registry.h>
#include <prometheus/text_serializer.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QByteArray>
#include <QMetaObject>
#include <QObject>
#include <QSemaphore>
#include <QString>
#include <QThread>

#include <vigil/Oid.h>

#include "base/wire/FrameHeader.h"
#include "base/wire/SnmpString.h"
#include "benchmarks/Clocks.h"
#include "benchmarks/Figures.h"
#include "benchmarks/FrameSink.h"

using vigil::Oid; // the slot's signature has no namespace

namespace {

constexpr int callsOfRound = 700;
constexpr int framesOfRound = 20000;
constexpr int gauges = 100;

/// Has the same slots as the library's client, as far as the look-up by name meets them, and does nothing.
class Receiver : public QObject
{
    Q_OBJECT

public slots:
    void done() { m_done.release(); }
    bool sendValue(Oid, bool, bool) { return true; }
    bool sendValue(Oid, qint32, bool) { return true; }
    bool sendValue(Oid, double, bool) { return true; }
    bool sendValue(Oid, QString, bool) { return true; }

public:
    void wait() { m_done.acquire(); }

private:
    QSemaphore m_done;
};

/// One queued call by name, with an identifier of 30 arcs, a text and a bool.
void bareQueuedCall(benchmark::State& state)
{
    qRegisterMetaType<Oid>("Oid");
    QThread thread;
    Receiver receiver;
    receiver.moveToThread(&thread);
    thread.start();
    const Oid oid = Oid::fromStdString(
        "1.3.6.1.4.1.32473.127.3.1.200.4.4.1.2.3.97.112.112.2.104.99.7.109.48.48.48.48.48.48");
    const QString text = QStringLiteral("12345.6");
    StopWatch watch(CLOCK_THREAD_CPUTIME_ID);
    for (auto round : state) {
        watch.start();
        for (int i = 0; i < callsOfRound; ++i)
            QMetaObject::invokeMethod(&receiver, "sendValue", Qt::QueuedConnection, Q_ARG(Oid, oid),
                                      Q_ARG(QString, text), Q_ARG(bool, false));
        watch.stop();
        QMetaObject::invokeMethod(&receiver, "done", Qt::QueuedConnection);
        receiver.wait();
    }
    thread.quit();
    thread.wait();
    const double perCall = watch.total() / static_cast<double>(state.iterations()) / callsOfRound;
    state.counters["ns"] = perCall;
    figures::add("bare queued call ns", perCall);
}

int connectTo(std::uint16_t port, bool lowDelay)
{
    const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    if (connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0)
        std::abort();
    const int value = lowDelay ? 1 : 0;
    setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &value, sizeof(value));
    return connection;
}

QByteArray frameOfOneCell()
{
    base::SnmpString record;
    record.oid = "127.3.1.200.4.4.1.2.3.97.112.112.2.104.99.7.109.48.48.48.48.48.48";
    record.value = "12345.6";
    QByteArray payload;
    record.serialize(payload);
    return base::FrameHeader().toBytes(payload.size()) + payload;
}

/// One send() a frame. The argument is 1 for low delay, as the library's own socket has it; with 0 the system
/// puts many frames into one segment.
void bareSend(benchmark::State& state)
{
    FrameSink sink;
    const bool lowDelay = state.range(0) == 1;
    const int connection = connectTo(sink.port(), lowDelay);
    const QByteArray frame = frameOfOneCell();
    StopWatch watch(CLOCK_MONOTONIC);
    std::uint64_t sent = 0;
    for (auto round : state) {
        watch.start();
        for (int i = 0; i < framesOfRound; ++i) {
            if (send(connection, frame.constData(), static_cast<std::size_t>(frame.size()), 0) !=
                frame.size())
                std::abort();
        }
        sent += framesOfRound;
        sink.waitForFrames(sent);
        watch.stop();
    }
    close(connection);
    const double perSecond = static_cast<double>(sent) * 1e9 / watch.total();
    state.counters["frames/s"] = perSecond;
    figures::add(lowDelay ? "send() frames a second" : "send() frames a second, with delay", perSecond);
}

/// Another library's road from new values to the bytes a manager reads.
void prometheusRefresh(benchmark::State& state)
{
    prometheus::Registry registry;
    auto& family = prometheus::BuildGauge().Name("sample").Help("A sample").Register(registry);
    std::vector<prometheus::Gauge*> all;
    for (int i = 0; i < gauges; ++i)
        all.push_back(&family.Add({{"name", "m" + std::to_string(10000 + i)}}));
    const prometheus::TextSerializer serializer;
    double value = 0;
    StopWatch watch(CLOCK_THREAD_CPUTIME_ID);
    for (auto round : state) {
        watch.start();
        ++value;
        for (prometheus::Gauge* gauge : all)
            gauge->Set(value);
        benchmark::DoNotOptimize(serializer.Serialize(registry.Collect()));
        watch.stop();
    }
    const double perMetric = watch.total() / static_cast<double>(state.iterations()) / gauges;
    state.counters["ns/metric"] = perMetric;
    figures::add("prometheus ns a metric", perMetric);
}

} // namespace

BENCHMARK(bareQueuedCall)->Repetitions(5)->UseRealTime();
BENCHMARK(bareSend)->Arg(0)->Arg(1)->Repetitions(5)->UseRealTime();
BENCHMARK(prometheusRefresh)->Repetitions(5);

#include "FloorBenchmarks.moc"
