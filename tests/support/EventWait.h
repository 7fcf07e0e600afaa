#ifndef VIGIL_TESTS_SUPPORT_EVENTWAIT_H
#define VIGIL_TESTS_SUPPORT_EVENTWAIT_H

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

namespace test {

constexpr int defaultDeadlineMs = 10'000;

/// Runs the event loop of the calling thread until condition() holds. False when the deadline has passed
/// without it.
template <typename Condition>
bool waitUntil(Condition condition, int deadlineMs = defaultDeadlineMs)
{
    QElapsedTimer clock;
    clock.start();
    QTimer wakeUp; // for conditions that no event of this thread tells about
    wakeUp.start(10);
    while (!condition()) {
        if (clock.hasExpired(deadlineMs))
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}

} // namespace test

#endif
