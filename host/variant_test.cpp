#include "host/variant.h"

#include "host/hosterror.h"

#include <gtest/gtest.h>

namespace {

Variant changed(const Variant &v, VarType to, HRESULT expected = S_OK)
{
    Variant out = Variant::fromBStr(QStringLiteral("untouched"));
    EXPECT_EQ(v.changeType(to, out), expected) << describeVariant(v).toStdString();
    return out;
}

TEST(VariantChange, TextToIntegerParsesDigitsAndRoundsHalfToEven)
{
    EXPECT_EQ(changed(Variant::fromBStr("12"), VarType::I4).i4(), 12);
    EXPECT_EQ(changed(Variant::fromBStr("  -7 "), VarType::I4).i4(), -7);
    EXPECT_EQ(changed(Variant::fromBStr("2.5"), VarType::I4).i4(), 2);
    EXPECT_EQ(changed(Variant::fromBStr("3.5"), VarType::I4).i4(), 4);
    EXPECT_EQ(changed(Variant::fromBStr("&H1F"), VarType::I4).i4(), 31);
}

TEST(VariantChange, BadTextIsATypeMismatchAndLeavesTheTargetAlone)
{
    const Variant out = changed(Variant::fromBStr("abc"), VarType::I4, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(out.bstr(), "untouched");
    changed(Variant::fromBStr(""), VarType::I4, DISP_E_TYPEMISMATCH);
    changed(Variant::fromBStr("12abc"), VarType::Bool, DISP_E_TYPEMISMATCH);
    changed(Variant::other(), VarType::BStr, DISP_E_TYPEMISMATCH);
    changed(Variant::fromI4(1), VarType::Other, DISP_E_TYPEMISMATCH);
}

TEST(VariantChange, OutOfRangeIsAnOverflow)
{
    changed(Variant::fromBStr("4294967296"), VarType::I4, DISP_E_OVERFLOW);
    changed(Variant::fromI4(40000), VarType::I2, DISP_E_OVERFLOW);
    changed(Variant::fromI4(-1), VarType::UI1, DISP_E_OVERFLOW);
    changed(Variant::fromR8(1e300), VarType::R4, DISP_E_OVERFLOW);
    EXPECT_EQ(changed(Variant::fromI4(32767), VarType::I2).i2(), 32767);
}

TEST(VariantChange, BooleansFollowTheAutomationRules)
{
    EXPECT_EQ(changed(Variant::fromI4(1), VarType::Bool).boolValue(), VARIANT_TRUE);
    EXPECT_EQ(changed(Variant::fromI4(-5), VarType::Bool).boolValue(), VARIANT_TRUE);
    EXPECT_EQ(changed(Variant::fromI4(0), VarType::Bool).boolValue(), VARIANT_FALSE);
    EXPECT_EQ(changed(Variant::fromBStr("0"), VarType::Bool).boolValue(), VARIANT_FALSE);
    EXPECT_EQ(changed(Variant::fromBStr("True"), VarType::Bool).boolValue(), VARIANT_TRUE);
    EXPECT_EQ(changed(Variant::fromBStr("false"), VarType::Bool).boolValue(), VARIANT_FALSE);
    EXPECT_EQ(changed(Variant::fromR8(0.25), VarType::Bool).boolValue(), VARIANT_TRUE);
    EXPECT_EQ(changed(Variant::fromBool(true), VarType::I4).i4(), -1);
    EXPECT_EQ(changed(Variant::fromBool(true), VarType::BStr).bstr(), "True");
    EXPECT_EQ(changed(Variant::fromBool(false), VarType::BStr).bstr(), "False");
}

TEST(VariantChange, EmptyConvertsToZeroAndEmptyText)
{
    EXPECT_EQ(changed(Variant(), VarType::I4).i4(), 0);
    EXPECT_EQ(changed(Variant(), VarType::BStr).bstr(), QString());
    EXPECT_EQ(changed(Variant(), VarType::Bool).boolValue(), VARIANT_FALSE);
}

TEST(VariantChange, NumbersToText)
{
    EXPECT_EQ(changed(Variant::fromI4(-42), VarType::BStr).bstr(), "-42");
    EXPECT_EQ(changed(Variant::fromR8(2.5), VarType::BStr).bstr(), "2.5");
    EXPECT_EQ(changed(Variant::fromR8(3.0), VarType::BStr).bstr(), "3");
    EXPECT_EQ(changed(Variant::fromR4(0.1f), VarType::BStr).bstr(), "0.1");
    EXPECT_FLOAT_EQ(changed(Variant::fromBStr("25.4"), VarType::R4).r4(), 25.4f);
}

TEST(VariantChange, DatesRoundTripThroughText)
{
    const Variant d = Variant::fromDate(45000.5); // 2023-03-15 12:00
    const QString text = changed(d, VarType::BStr).bstr();
    EXPECT_EQ(text, "3/15/2023 12:00:00 PM");
    EXPECT_DOUBLE_EQ(changed(Variant::fromBStr("2023-03-15"), VarType::Date).date(), 45000.0);
}

} // namespace
