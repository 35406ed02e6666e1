#include "base/leadinginteger.h"

#include <gtest/gtest.h>

namespace {

TEST(LeadingIntegerTest, ReadsLikeTheRuntimeAndClampsToThirtyTwoBits)
{
    EXPECT_EQ(leadingInteger(QStringLiteral(" \t\n 17 ")), 17);
    EXPECT_EQ(leadingInteger(QStringLiteral("-3x9")), -3);
    EXPECT_EQ(leadingInteger(QStringLiteral("+8")), 8);
    EXPECT_EQ(leadingInteger(QStringLiteral("abc")), 0);
    EXPECT_EQ(leadingInteger(QStringLiteral("- 5")), 0);
    EXPECT_EQ(leadingInteger(QString()), 0);
    EXPECT_EQ(leadingInteger(QStringLiteral("0x1F")), 0);
    EXPECT_EQ(leadingInteger(QStringLiteral("99999999999999999999")), 2147483647);
    EXPECT_EQ(leadingInteger(QStringLiteral("-2147483648")), -2147483647 - 1);
    EXPECT_EQ(leadingInteger(QStringLiteral("-99999999999")), -2147483647 - 1);
}

} // namespace
