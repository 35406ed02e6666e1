#include "platform/terminationsignals.h"

#include <csignal>
#include <gtest/gtest.h>

TEST(TerminationSignals, SignalsArriveInOrderAndNoLongerEndTheProcess)
{
    {
        TerminationSignals received;
        EXPECT_EQ(received.wait(0), 0);
        ASSERT_EQ(::raise(SIGTERM), 0); // would end the test without the handler
        ASSERT_EQ(::raise(SIGINT), 0);
        EXPECT_EQ(received.wait(1000), SIGTERM);
        EXPECT_EQ(received.wait(1000), SIGINT);
        EXPECT_EQ(received.wait(0), 0);
    }
    // The default handler is back: a second object can be made.
    struct sigaction current {};
    ::sigaction(SIGTERM, nullptr, &current);
    EXPECT_EQ(current.sa_handler, SIG_DFL);
    TerminationSignals again;
    EXPECT_EQ(again.wait(0), 0);
}
