#include "platform/clock.h"
#include "platform/qtestprint.h"

#include <gtest/gtest.h>
#include <thread>

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
