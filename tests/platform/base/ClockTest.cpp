#include <QElapsedTimer>

#include "platform/base/Clock.h"
#include "platform/base/TaskScope.h"
#include "tests/TestProgram.h"

using namespace tidemark;
using namespace std::chrono_literals;

/// Sleeps of the system's clock, and tasks that sleep.
class ClockTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sleepsLastAsLongAsTheyShould() {
        QElapsedTimer timer;
        timer.start();
        QList<qint64> turns;
        TaskScope tasks;
        tasks.start([&](std::stop_token stop) -> QCoro::Task<> {
            // Durations of zero and below still take one turn of the event loop.
            for (const std::chrono::nanoseconds duration :
                 {0ns, std::chrono::nanoseconds(-5s), 60'000'000ns}) {
                co_await m_clock.sleep(duration, stop);
                turns.append(timer.elapsed());
            }
        });
        QVERIFY(turns.isEmpty());
        QTRY_COMPARE(turns.size(), 3);
        QVERIFY(turns.at(2) - turns.at(1) >= 60);
    }

    void aStopEndsAnyWait() {
        int ended = 0;
        TaskScope tasks;
        const auto wait = [&](std::stop_token stop) -> QCoro::Task<> {
            co_await m_clock.sleep(std::chrono::nanoseconds::max(), stop);
            co_await m_clock.sleep(1h, stop);  // stopped before it begins
            ++ended;
        };
        TaskHandle task = tasks.start(wait);
        task.requestStop();
        QCOMPARE(ended, 0);  // not inside the request
        QTRY_COMPARE(ended, 1);
        tasks.start(wait);
        tasks.start(wait);
        tasks.finish();
        QCOMPARE(ended, 3);
        tasks.start(wait);
        QCOMPARE(ended, 3);  // nothing starts after finish()
    }

    void stopAndTimerMayMeet() {
        // The stop comes at about the time when the sleep ends, sometimes before and sometimes after.
        int ended = 0;
        TaskScope tasks;
        for (int i = 0; i < 2000; ++i) {
            TaskHandle task = tasks.start([&](std::stop_token stop) -> QCoro::Task<> {
                co_await m_clock.sleep(20us, stop);
                ++ended;
            });
            if (i % 3 == 0)
                QCoreApplication::processEvents();
            task.requestStop();
        }
        QTRY_COMPARE(ended, 2000);
    }

    void anExceptionEndsItsTaskOnly() {
        QTest::ignoreMessage(QtWarningMsg, "A task ended with an exception: broken");
        bool isDone = false;
        TaskScope tasks;
        tasks.start([&](std::stop_token stop) -> QCoro::Task<> {
            co_await m_clock.sleep(1ms, stop);
            throw std::runtime_error("broken");
        });
        tasks.start([&](std::stop_token stop) -> QCoro::Task<> {
            co_await m_clock.sleep(5ms, stop);
            isDone = true;
        });
        QTRY_VERIFY(isDone);
    }

private:
    SystemClock m_clock;
};

TIDEMARK_TEST(ClockTest)
#include "ClockTest.moc"
