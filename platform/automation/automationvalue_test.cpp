#include "platform/automation/automationvalue.h"

#include "host/hosterror.h"
#include "platform/automation/automationerrors.h"
#include "platform/automation/automationserver.h"
#include "platform/automation/wireframe.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtEndian>

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

TEST(WireFrameTest, MessagesSurviveArbitrarySplits)
{
    QJsonObject first{{QStringLiteral("k"), QStringLiteral("call")}, {QStringLiteral("id"), 1}};
    QJsonObject second{{QStringLiteral("k"), QStringLiteral("reply")}, {QStringLiteral("id"), 2}};
    const QByteArray stream = wire::encodeFrame(first) + wire::encodeFrame(second);
    for (qsizetype cut = 0; cut <= stream.size(); ++cut) {
        wire::FrameReader reader;
        std::vector<QJsonObject> got;
        reader.append(stream.left(cut));
        while (auto m = reader.next())
            got.push_back(*m);
        reader.append(stream.mid(cut));
        while (auto m = reader.next())
            got.push_back(*m);
        ASSERT_EQ(got.size(), 2u) << "cut at " << cut;
        EXPECT_EQ(got[0], first);
        EXPECT_EQ(got[1], second);
        EXPECT_FALSE(reader.broken());
    }
}

TEST(WireFrameTest, OversizedOrGarbledFramesBreakTheStream)
{
    wire::FrameReader tooLong;
    QByteArray header(4, Qt::Uninitialized);
    qToBigEndian<quint32>(static_cast<quint32>(wire::kMaxFrameBytes + 1), header.data());
    tooLong.append(header);
    EXPECT_FALSE(tooLong.next());
    EXPECT_TRUE(tooLong.broken());

    wire::FrameReader garbled;
    qToBigEndian<quint32>(3u, header.data());
    garbled.append(header + "abc" + wire::encodeFrame(QJsonObject{{QStringLiteral("k"), 1}}));
    EXPECT_FALSE(garbled.next());
    EXPECT_TRUE(garbled.broken());
    EXPECT_FALSE(garbled.next()); // nothing after a break is trusted
}
