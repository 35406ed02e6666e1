#include "platform/automation/automationvalue.h"

#include "host/hosterror.h"
#include "platform/automation/automationerrors.h"
#include "platform/automation/automationserver.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace {

struct Inert final : AutomationObject {
    HRESULT invoke(const QString &, AutomationCall &) override { return DISP_E_MEMBERNOTFOUND; }
};

AutomationValue roundTrip(const AutomationValue &value)
{
    // Through real bytes, as the channel carries it.
    QJsonObject carrier;
    carrier[QStringLiteral("x")] = value.toJson();
    const QJsonObject back = QJsonDocument::fromJson(QJsonDocument(carrier).toJson()).object();
    AutomationValue out;
    EXPECT_TRUE(AutomationValue::fromJson(back.value(QStringLiteral("x")), out));
    return out;
}

} // namespace

TEST(AutomationValueTest, ScalarsKeepTheirAutomationTypeAcrossTheWire)
{
    const std::vector<AutomationValue> values = {
        AutomationValue(),
        Variant::fromI2(-7),
        Variant::fromI4(-2147483647 - 1),
        Variant::fromUI1(255),
        Variant::fromR4(1.5f),
        Variant::fromR8(0.1),
        Variant::fromDate(45000.25),
        Variant::fromBStr(QStringLiteral("C:\\Temp\\\u00e9\u4e2d.mcb")),
        Variant::fromBool(true),
        Variant::fromBool(false),
    };
    for (const AutomationValue &value : values) {
        const AutomationValue back = roundTrip(value);
        EXPECT_EQ(back.scalar().type(), value.scalar().type()) << describeVariant(value.scalar()).toStdString();
        EXPECT_EQ(back, value) << describeVariant(value.scalar()).toStdString();
    }
}

TEST(AutomationValueTest, ObjectsAndArraysNest)
{
    const AutomationValue nested = AutomationValue::fromArray(
        {Variant::fromI4(1), AutomationValue::fromHandle(42),
         AutomationValue::fromArray({Variant::fromBStr(QStringLiteral("a")), AutomationValue::nothing()})});
    const AutomationValue back = roundTrip(nested);
    ASSERT_TRUE(back.isArray());
    ASSERT_EQ(back.items().size(), 3u);
    EXPECT_EQ(back.items()[1].handle(), 42);
    EXPECT_TRUE(back.items()[2].items()[1].isNothing());
    EXPECT_EQ(back, nested);
}

TEST(AutomationValueTest, ServerObjectsBecomeHandlesThroughTheResolver)
{
    auto object = std::make_shared<Inert>();
    const AutomationValue value = AutomationValue::fromObject(object);
    AutomationValue back;
    ASSERT_TRUE(AutomationValue::fromJson(value.toJson([](const auto &) { return ObjectHandle(17); }), back));
    EXPECT_EQ(back.handle(), 17);
    // Without a resolver nothing can name it: it goes out as Nothing.
    ASSERT_TRUE(AutomationValue::fromJson(value.toJson(), back));
    EXPECT_TRUE(back.isNothing());
}

TEST(AutomationValueTest, MalformedWireValuesAreRejected)
{
    AutomationValue out;
    const char *bad[] = {
        R"("text")", R"({"v":1})", R"({"vt":3,"v":"x"})", R"({"vt":8,"v":3})", R"({"vt":11,"v":1})",
        R"({"vt":8204,"v":[{"vt":99}]})", R"({"vt":9})", R"({"vt":12345})",
    };
    for (const char *text : bad) {
        const QJsonDocument doc = QJsonDocument::fromJson(QByteArray("[") + text + "]");
        EXPECT_FALSE(AutomationValue::fromJson(doc.array().at(0), out)) << text;
    }
}

TEST(AutomationValueTest, ScalarConversionsRefuseObjectsAndArrays)
{
    EXPECT_EQ(AutomationValue(Variant::fromBStr(QStringLiteral("12"))).toI4(), 12);
    EXPECT_TRUE(AutomationValue(Variant::fromI4(-1)).toBool());
    EXPECT_THROW(AutomationValue::fromHandle(3).toI4(), HostError);
    EXPECT_THROW(AutomationValue::fromArray({}).toText(), HostError);
}
