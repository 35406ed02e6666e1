#include "cadsim/model/cadconstants.h"
#include "cadsim/model/scriptadapters.h"
#include "modeltestsupport.h"

#include <QJsonDocument>
#include <QJsonObject>
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

TEST(CadConstantValues, LowerCaseNamesWithLongValues)
{
    const QHash<QString, ScriptValue> table = cadConstantValues();
    EXPECT_EQ(table.size(), static_cast<qsizetype>(cad::constantTable().size()));
    ASSERT_TRUE(table.contains("mcfutureversion"));
    EXPECT_EQ(table["mcfutureversion"].type(), ValueType::Long);
    EXPECT_EQ(table["mcfutureversion"].toLong(), cad::mcFutureVersion);
    EXPECT_EQ(table["mcpagesetupprintertopmargin"].toLong(), cad::mcPageSetupPrinterTopMargin);
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

TEST_F(ScriptAdaptersTest, OpenAndImportFailuresReachTheMacro)
{
    std::int32_t error = 0;
    EXPECT_FALSE(openNative("S:\\newer.mcdprt", &error));
    EXPECT_EQ(error, cad::mcFutureVersion);
    EXPECT_FALSE(openNative("S:\\nothing.mcdprt", &error));
    EXPECT_EQ(error, cad::mcFileNotFoundError);

    Call load{{str("S:\\flange.igs"), str(""), ScriptValue::nothing(), ScriptValue::fromLong(-1)}};
    auto flange = load(app, "LoadFile4").toObject();
    ASSERT_TRUE(flange);
    EXPECT_EQ(load.args[3].toLong(), 0);
    EXPECT_EQ(get(flange, "GetPathName").toString(), "");
    EXPECT_EQ(get(flange, "GetType").toLong(), cad::mcDocPART);

    Call bad{{str("S:\\notes.xyz"), str(""), ScriptValue::nothing(), ScriptValue::fromLong(0)}};
    EXPECT_TRUE(bad(app, "LoadFile4").isNothing());
    EXPECT_EQ(bad.args[3].toLong(), cad::mcInvalidFileTypeError);
}

TEST_F(ScriptAdaptersTest, DrawingSheetsAndPdfExportOfChosenSheets)
{
    auto drawing = openNative("S:\\layout.mcddrw");
    ASSERT_TRUE(drawing);
    EXPECT_EQ(drawing->typeName(), "DrawingDoc");
    EXPECT_EQ(texts(get(drawing, "GetSheetNames")), (QStringList{"Sheet1", "Sheet2", "Detail A"}));
    EXPECT_EQ(get(get(drawing, "GetCurrentSheet").toObject(), "GetName").toString(), "Sheet2");
    EXPECT_TRUE(get(drawing, "ActivateSheet", {str("Sheet1")}).toBool());
    EXPECT_FALSE(get(drawing, "ActivateSheet", {str("Sheet7")}).toBool());
    EXPECT_EQ(get(get(drawing, "GetCurrentSheet").toObject(), "GetName").toString(), "Sheet1");
    EXPECT_TRUE(get(drawing, "GetConfigurationNames").isEmpty());

    QDir(scratch.path()).mkpath("out");
    auto pdf = get(app, "GetExportFileData", {ScriptValue::fromLong(cad::mcExportPdfData)}).toObject();
    EXPECT_TRUE(get(pdf, "SetSheets", {ScriptValue::fromLong(cad::mcExportData_ExportSpecifiedSheets),
                                       ScriptValue::fromStringList({"Sheet2", "Detail A"})})
                    .toBool());
    auto ext = get(drawing, "Extension").toObject();
    Call save{{str("C:\\out\\two.pdf"), ScriptValue::fromLong(0), ScriptValue::fromLong(1), ScriptValue::fromObject(pdf),
               ScriptValue::fromLong(-1), ScriptValue::fromLong(-1)}};
    ASSERT_TRUE(save(ext, "SaveAs").toBool());
    EXPECT_EQ(save.args[4].toLong(), 0);
    EXPECT_EQ(save.args[5].toLong(), 0);
    ASSERT_TRUE(QFile::exists(scratch.filePath("out/two.pdf")));
    EXPECT_EQ(exportRecord(*model, scratch.filePath("out/two.pdf"))["sheets"].toVariant().toStringList(),
              (QStringList{"Sheet2", "Detail A"}));

    // A single sheet name is accepted as well as an array.
    get(pdf, "SetSheets", {ScriptValue::fromLong(cad::mcExportData_ExportSpecifiedSheets), str("Sheet1")});
    EXPECT_EQ(texts(get(pdf, "GetSheets")), QStringList{"Sheet1"});

    Call bad{{str("C:\\out\\two.stl"), ScriptValue::fromLong(0), ScriptValue::fromLong(1), ScriptValue::nothing(),
              ScriptValue::fromLong(0), ScriptValue::fromLong(0)}};
    EXPECT_FALSE(bad(ext, "SaveAs").toBool());
    EXPECT_EQ(bad.args[4].toLong(), 256);
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

TEST_F(ScriptAdaptersTest, PreferencesOfEveryKind)
{
    get(app, "SetUserPreferenceToggle", {ScriptValue::fromLong(cad::mcPDFExportInColor), ScriptValue::fromBool(true)});
    get(app, "SetUserPreferenceIntegerValue", {ScriptValue::fromLong(cad::mcSTLQuality), ScriptValue::fromLong(7)});
    get(app, "SetUserPreferenceDoubleValue",
        {ScriptValue::fromLong(cad::mcPageSetupPrinterTopMargin), ScriptValue::fromDouble(0.015)});
    get(app, "SetUserPreferenceStringListValue",
        {ScriptValue::fromLong(cad::mcGlimpseModelSelectionList), str("Sheet1\n Detail A \n")});
    const Preferences &prefs = model->preferences();
    EXPECT_TRUE(prefs.toggle(cad::mcPDFExportInColor));
    EXPECT_EQ(prefs.integer(cad::mcSTLQuality), 7);
    EXPECT_DOUBLE_EQ(prefs.real(cad::mcPageSetupPrinterTopMargin), 0.015);
    EXPECT_EQ(prefs.stringList(cad::mcGlimpseModelSelectionList), (QStringList{"Sheet1", "Detail A"}));
    EXPECT_TRUE(get(app, "GetUserPreferenceToggle", {ScriptValue::fromLong(cad::mcPDFExportInColor)}).toBool());
    EXPECT_EQ(get(app, "GetUserPreferenceIntegerValue", {ScriptValue::fromLong(cad::mcSTLQuality)}).toLong(), 7);
}
