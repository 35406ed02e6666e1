#include "platform/clock.h"
#include "platform/qtestprint.h"

#include <gtest/gtest.h>
#include <thread>

TEST(FakeClockTest, SleepAdvancesBothTimeLinesAtOnce)
{
    const QDateTime start(QDate(2024, 2, 28), QTime(23, 59, 59));
    FakeClock clock(start);
    clock.sleep(1500);
    clock.sleep(-20); // counts as no time
    EXPECT_EQ(clock.now(), start.addMSecs(1500));
    EXPECT_EQ(clock.now().date(), QDate(2024, 2, 29));
    EXPECT_EQ(clock.elapsed(), 1500);
    EXPECT_EQ(clock.sleepCount(), 2);
    EXPECT_EQ(clock.totalSlept(), 1500);

    clock.advance(500);
    EXPECT_EQ(clock.elapsed(), 2000);
    EXPECT_EQ(clock.totalSlept(), 1500);
    // Setting the wall clock does not move the monotonic line.
    clock.setNow(start);
    EXPECT_EQ(clock.now(), start);
    EXPECT_EQ(clock.elapsed(), 2000);
}

TEST(FakeClockTest, SleepsFromSeveralThreadsAllCount)
{
    FakeClock clock;
    auto sleeper = [&] {
        for (int i = 0; i < 1000; ++i)
            clock.sleep(1);
    };
    std::thread a(sleeper);
    std::thread b(sleeper);
    a.join();
    b.join();
    EXPECT_EQ(clock.elapsed(), 2000);
    EXPECT_EQ(clock.sleepCount(), 2000);
}
