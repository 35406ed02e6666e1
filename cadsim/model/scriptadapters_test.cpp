#include "cadsim/model/cadconstants.h"
#include "cadsim/model/scriptadapters.h"
#include "modeltestsupport.h"

#include <gtest/gtest.h>

using namespace cadsim;

namespace {

// Calls a member with the given arguments; the arguments stay in `args` so
// ByRef results can be read afterwards.
struct Call
{
    std::vector<ScriptValue> args;

    ScriptValue operator()(const std::shared_ptr<ScriptObject> &o, const QString &member,
                           CallKind kind = CallKind::Get)
    {
        ScriptArgs refs;
        for (ScriptValue &v : args)
            refs.push_back(&v);
        return o->invoke(member, kind, refs);
    }
};

ScriptValue get(const std::shared_ptr<ScriptObject> &o, const QString &member, std::vector<ScriptValue> args = {})
{
    Call c{std::move(args)};
    return c(o, member);
}

void let(const std::shared_ptr<ScriptObject> &o, const QString &member, const ScriptValue &value)
{
    Call c{{value}};
    c(o, member, CallKind::Let);
}

ScriptValue str(const char *text)
{
    return ScriptValue::fromString(QString::fromUtf8(text));
}

QStringList texts(const ScriptValue &v)
{
    QStringList out;
    if (v.isArray()) {
        for (const ScriptValue &item : v.array()->items)
            out << item.toString();
    }
    return out;
}

class ScriptAdaptersTest : public ::testing::Test
{
protected:
    ScriptAdaptersTest()
    {
        CadSettings settings = testSettings(scratch);
        settings.printers = {{"Office Laser", ""}, {"Jammed", "Paper jam."}};
        settings.spoolFile = scratch.filePath("spool.jsonl");
        model = std::make_shared<CadApplication>(testResolver(scratch), settings);
        app = ScriptCadApplication::create(model);
        host = std::make_shared<ScriptMacroHost>(app);
    }

    std::shared_ptr<ScriptObject> openNative(const char *path, std::int32_t *error = nullptr)
    {
        auto openRequest = get(app, "GetOpenDocSpec", {str(path)}).toObject();
        let(openRequest, "ReadOnly", ScriptValue::fromBool(true));
        let(openRequest, "Silent", ScriptValue::fromBool(true));
        let(openRequest, "ConfigurationName", str(""));
        let(openRequest, "DisplayState", str(""));
        const ScriptValue doc = get(app, "OpenDoc7", {ScriptValue::fromObject(openRequest)});
        if (error)
            *error = get(openRequest, "Error").toLong();
        return doc.isNothing() ? nullptr : doc.toObject();
    }

    QTemporaryDir scratch;
    std::shared_ptr<CadApplication> model;
    std::shared_ptr<ScriptCadApplication> app;
    std::shared_ptr<ScriptMacroHost> host;
};

} // namespace

TEST_F(ScriptAdaptersTest, MacroReachesTheApplicationThroughItsHost)
{
    EXPECT_EQ(get(host, "CADRIX").object(), app);
    EXPECT_EQ(get(app, "revisionnumber").toString(), "21.0.0");
    auto frame = get(app, "Frame").toObject();
    let(frame, "KeepInVisible", ScriptValue::fromBool(true));
    EXPECT_TRUE(model->frame().keepInvisible);
    EXPECT_TRUE(get(get(app, "Frame").toObject(), "KeepInVisible").toBool());
}

TEST_F(ScriptAdaptersTest, UnknownMembersMissingArgumentsAndReadOnlyProperties)
{
    const auto errorOf = [](auto &&f) {
        try {
            f();
        } catch (const ScriptError &e) {
            return e.number();
        }
        return 0;
    };
    EXPECT_EQ(errorOf([&] { get(app, "NoSuchMember"); }), 438);
    EXPECT_EQ(errorOf([&] { get(app, "GetOpenDocSpec"); }), 449);
    EXPECT_EQ(errorOf([&] { get(app, "QuitDoc", {ScriptValue::missing()}); }), 449);
    auto openRequest = get(app, "GetOpenDocSpec", {str("S:\\shaft.mcdprt")}).toObject();
    EXPECT_EQ(errorOf([&] { let(openRequest, "Error", ScriptValue::fromLong(0)); }), 438);
    EXPECT_EQ(errorOf([&] { get(app, "OpenDoc7", {ScriptValue::fromObject(app)}); }), 13);
}

TEST_F(ScriptAdaptersTest, OpenDocumentIsTheSameObjectEachTime)
{
    std::int32_t error = -1;
    auto doc = openNative("S:\\bracket.mcdprt", &error);
    ASSERT_TRUE(doc);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(doc->typeName(), "PartDoc");
    EXPECT_EQ(get(doc, "GetType").toLong(), cad::mcDocPART);
    EXPECT_EQ(get(doc, "GetTitle").toString(), "bracket.mcdprt");
    EXPECT_EQ(get(doc, "GetPathName").toString(), "S:\\bracket.mcdprt");
    EXPECT_EQ(texts(get(doc, "GetConfigurationNames")), (QStringList{"Default", "Machined", "A/B\\C"}));
    EXPECT_TRUE(get(doc, "ShowConfiguration", {str("A/B\\C")}).toBool());
    auto active = get(get(doc, "ConfigurationManager").toObject(), "ActiveConfiguration").toObject();
    EXPECT_EQ(get(active, "Name").toString(), "A/B\\C");
    EXPECT_TRUE(get(doc, "GetSheetNames").isEmpty());
    EXPECT_TRUE(get(doc, "GetCurrentSheet").isNothing());

    Call activate{{str("S:\\bracket.mcdprt"), ScriptValue::fromBool(true), ScriptValue::fromLong(-1)}};
    EXPECT_EQ(activate(app, "ActivateDoc2").object(), doc);
    EXPECT_EQ(activate.args[2].toLong(), 0);
    EXPECT_EQ(get(app, "ActiveDoc").object(), doc);

    EXPECT_TRUE(get(app, "QuitDoc", {get(doc, "GetTitle")}).toBool());
    EXPECT_TRUE(get(app, "ActiveDoc").isNothing());
}

// The conversion template's sheet exports run through these adapters in the
// template runs; a single name in place of an array is what they do not use.
TEST_F(ScriptAdaptersTest, PdfExportDataTakesASingleSheetNameAsWellAsAnArray)
{
    auto pdf = get(app, "GetExportFileData", {ScriptValue::fromLong(cad::mcExportPdfData)}).toObject();
    ASSERT_TRUE(pdf);
    get(pdf, "SetSheets", {ScriptValue::fromLong(cad::mcExportData_ExportSpecifiedSheets), str("Sheet1")});
    EXPECT_EQ(texts(get(pdf, "GetSheets")), QStringList{"Sheet1"});
}

TEST_F(ScriptAdaptersTest, AssemblyComponentsAreObjectsOrEmpty)
{
    auto assembly = openNative("S:\\gearbox.mcdasm");
    ASSERT_TRUE(assembly);
    const ScriptValue parts = get(assembly, "GetComponents", {ScriptValue::fromBool(true)});
    ASSERT_TRUE(parts.isArray());
    ASSERT_EQ(parts.array()->items.size(), 2u);
    auto cover = parts.array()->items[1].toObject();
    EXPECT_TRUE(get(cover, "IsVirtual").toBool());
    EXPECT_EQ(get(cover, "GetPathName").toString(), "S:\\cover.mcdprt");
    EXPECT_FALSE(get(parts.array()->items[0].toObject(), "IsVirtual").toBool());

    auto part = openNative("S:\\shaft.mcdprt");
    EXPECT_TRUE(get(part, "GetComponents", {ScriptValue::fromBool(true)}).isEmpty());
}
