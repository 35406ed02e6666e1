#include "cadsim/engine/decimal96.h"
#include "cadsim/engine/scripterror.h"

#include <gtest/gtest.h>

#include <limits>

namespace cadsim {
namespace {

Decimal dec(const char *text)
{
    const std::optional<Decimal> d = Decimal::parse(QString::fromLatin1(text));
    EXPECT_TRUE(d.has_value()) << text;
    return d.value_or(Decimal());
}

QString str(const Decimal &d)
{
    return d.toString();
}

template <typename F>
int errorOf(F f)
{
    try {
        f();
    } catch (const ScriptError &e) {
        return e.number();
    }
    return 0;
}

TEST(DecimalTest, WideProductsAndSumsCarryAcrossLimbs)
{
    const Decimal low64 = Decimal::fromParts(~0ULL, 0, 0, false);
    EXPECT_EQ(str(low64 + Decimal::fromInt64(1)), QStringLiteral("18446744073709551616"));
    EXPECT_EQ(str(low64 * Decimal::fromInt64(4294967296LL)), QStringLiteral("79228162514264337589248983040"));
    EXPECT_EQ(errorOf([&] { return low64 * low64; }), 6);
    // A product with scale 56 keeps the 28 digits that fit.
    EXPECT_EQ(str(dec("0.0000000000000000000000000001") * dec("0.5")), QStringLiteral("0"));
    EXPECT_EQ(str(dec("0.000000000000015") * dec("0.00000000000001")), QStringLiteral("0.0000000000000000000000000002"));
}

TEST(DecimalTest, AligningScalesRoundsHalfToEvenAtTheTopOfTheRange)
{
    const Decimal top = dec("79228162514264337593543950334");
    EXPECT_EQ(str(top + dec("0.5")), QStringLiteral("79228162514264337593543950334"));
    EXPECT_EQ(str(top + dec("0.51")), QStringLiteral("79228162514264337593543950335"));
    EXPECT_EQ(errorOf([&] { return top + dec("1.5"); }), 6);
    EXPECT_EQ(str(dec("10") + dec("0.0000000000000000000000000001")), QStringLiteral("10"));
    EXPECT_EQ(str(dec("1") - dec("0.0000000000000000000000000001")), QStringLiteral("0.9999999999999999999999999999"));
    EXPECT_EQ(str(dec("-5") + dec("5.00")), QStringLiteral("0"));
}

TEST(DecimalTest, DivisionKeepsAllDigitsThatFit)
{
    EXPECT_EQ(str(Decimal::fromInt64(1) / Decimal::fromInt64(7)), QStringLiteral("0.1428571428571428571428571429"));
    EXPECT_EQ(str(Decimal::fromInt64(-100) / Decimal::fromInt64(3)), QStringLiteral("-33.333333333333333333333333333"));
    EXPECT_EQ(str(dec("7.9228162514264337593543950335") / dec("0.1")), QStringLiteral("79.228162514264337593543950335"));
    EXPECT_EQ(str(dec("1E+25") / dec("0.001")), QStringLiteral("10000000000000000000000000000"));
    EXPECT_EQ(errorOf([] { return dec("79228162514264337593543950335") / dec("0.1"); }), 6);
    EXPECT_EQ(errorOf([] { return Decimal::fromInt64(1) / Decimal(); }), 11);
}

TEST(DecimalTest, ParsesTextAndDoubles)
{
    EXPECT_EQ(str(dec("  -1.5E-3 ")), QStringLiteral("-0.0015"));
    EXPECT_EQ(str(dec("+1,000.50")), QStringLiteral("1000.5"));
    EXPECT_EQ(str(dec("0.12345678901234567890123456789")), QStringLiteral("0.1234567890123456789012345679"));
    EXPECT_EQ(str(dec("9.99999999999999999999999999999")), QStringLiteral("10"));
    EXPECT_EQ(str(dec("1e-40")), QStringLiteral("0"));
    for (const char *bad : {"", ".", "1.2.3", "1e", "1x", "--1", "inf"})
        EXPECT_FALSE(Decimal::parse(QString::fromLatin1(bad)).has_value()) << bad;
    EXPECT_EQ(errorOf([] { return Decimal::parse(QStringLiteral("1e29")); }), 6);
    EXPECT_EQ(str(Decimal::fromDouble(1.0 / 3)), QStringLiteral("0.333333333333333"));
    EXPECT_EQ(str(Decimal::fromDouble(0.1f, 7)), QStringLiteral("0.1"));
    EXPECT_EQ(errorOf([] { return Decimal::fromDouble(8e28); }), 6);
}

TEST(DecimalTest, RoundsToWholeNumbersAndCurrency)
{
    EXPECT_EQ(dec("2.5").toInt64(), 2);
    EXPECT_EQ(dec("-3.5").toInt64(), -4);
    EXPECT_EQ(dec("2.5000000000000000000000000001").toInt64(), 3);
    EXPECT_EQ(dec("-9223372036854775808").toInt64(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(errorOf([] { return dec("9223372036854775807.5").toInt64(); }), 6);
    EXPECT_EQ(dec("1.23455").toCurrencyUnits(), 12346);
    EXPECT_EQ(str(dec("-2.5").floored()), QStringLiteral("-3"));
    EXPECT_EQ(str(dec("-2.5").truncated()), QStringLiteral("-2"));
    EXPECT_EQ(str(dec("0.125").rounded(2)), QStringLiteral("0.12"));
    EXPECT_EQ(Decimal::compare(dec("1.50"), dec("1.5")), 0);
    EXPECT_EQ(Decimal::compare(-dec("0"), dec("0")), 0);
    EXPECT_EQ(Decimal::compare(dec("-1"), dec("0.0000000000000000000000000001")), -1);
    EXPECT_EQ(Decimal::compare(dec("-2"), dec("-1.9999999999999999999999999999")), -1);
}

} // namespace
} // namespace cadsim
