#include "cadsim/model/cadapplication.h"
#include "cadsim/model/cadconstants.h"
#include "modeltestsupport.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

namespace {

class SaveAsTest : public ::testing::Test
{
protected:
    SaveAsTest() : app(testResolver(scratch), testSettings(scratch)), observer(testResolver(scratch))
    {
        app.addObserver(&observer);
        QDir(scratch.path()).mkpath("out");
    }

    ModelDocPtr open(const QString &path)
    {
        auto openRequest = app.getOpenDocSpec(path);
        return app.openDoc7(*openRequest);
    }

    // Saves and returns the written description (empty when it failed).
    QJsonObject save(ModelDoc &doc, const QString &name, const ExportPdfData *data = nullptr)
    {
        errors = warnings = -1;
        if (!doc.extension().saveAs(name, cad::mcSaveAsCurrentVersion, cad::mcSaveAsOptions_Silent, data, errors,
                                    warnings))
            return {};
        const QString native = testResolver(scratch)(name);
        if (!QFile::exists(native))
            return {};
        return exportRecord(app, native);
    }

    static QStringList list(const QJsonValue &v)
    {
        QStringList out;
        for (const QJsonValue &x : v.toArray())
            out << x.toString();
        return out;
    }

    QTemporaryDir scratch;
    CadApplication app;
    RecordingObserver observer;
    std::int32_t errors = -1;
    std::int32_t warnings = -1;
};

} // namespace

TEST_F(SaveAsTest, PartExportStatesSourceConfigurationFormatAndPreferences)
{
    ModelDocPtr part = open("S:\\bracket.mcdprt");
    ASSERT_TRUE(part);
    app.preferences().setToggle(cad::mcIGESExportAsWireframe, true);
    app.preferences().setInteger(cad::mcIGESSystem, 4);
    ASSERT_TRUE(part->showConfiguration("Default"));

    const QJsonObject d = save(*part, "C:\\out\\bracket_0.IGS");
    ASSERT_FALSE(d.isEmpty()) << errors;
    EXPECT_EQ(errors, 0);
    EXPECT_EQ(warnings, 0);
    EXPECT_EQ(d["target"].toString(), "C:\\out\\bracket_0.IGS");
    EXPECT_EQ(d["format"].toString(), "igs");
    EXPECT_EQ(d["source"].toString(), "S:\\bracket.mcdprt");
    EXPECT_FALSE(d["imported"].toBool());
    EXPECT_EQ(d["documentType"].toString(), "part");
    EXPECT_EQ(list(d["configurations"]), QStringList{"Default"});
    EXPECT_EQ(d["options"].toInt(), cad::mcSaveAsOptions_Silent);

    // Every IGES preference is listed, set or not, and nothing else.
    const QJsonObject prefs = d["preferences"].toObject();
    EXPECT_EQ(prefs.size(), 10);
    EXPECT_TRUE(prefs["mcIGESExportAsWireframe"].toBool());
    EXPECT_EQ(prefs["mcIGESSystem"].toInt(), 4);
    EXPECT_FALSE(prefs["mcIGESExportFreeCurves"].toBool());
    EXPECT_FALSE(prefs.contains("mcPDFExportInColor"));

    EXPECT_EQ(observer.events.last(), "saving:bracket.mcdprt:C:\\out\\bracket_0.IGS:absent");
}

TEST_F(SaveAsTest, DrawingPdfFollowsTheExportData)
{
    ModelDocPtr drawing = open("S:\\layout.mcddrw");
    ASSERT_TRUE(drawing);

    // Without export data a PDF holds every sheet.
    EXPECT_EQ(list(save(*drawing, "C:\\out\\all.pdf")["sheets"]), (QStringList{"Sheet1", "Sheet2", "Detail A"}));

    std::shared_ptr<ExportPdfData> data = app.exportFileData(cad::mcExportPdfData);
    ASSERT_TRUE(data);
    EXPECT_EQ(app.exportFileData(cad::mcExportPdfData), data); // one object per application
    EXPECT_FALSE(app.exportFileData(7));

    data->setSheets(cad::mcExportData_ExportSpecifiedSheets, {"detail a", "Sheet1"});
    EXPECT_EQ(list(save(*drawing, "C:\\out\\two.pdf", data.get())["sheets"]), (QStringList{"Detail A", "Sheet1"}));

    data->setSheets(cad::mcExportData_ExportCurrentSheet, {});
    EXPECT_EQ(list(save(*drawing, "C:\\out\\current.pdf", data.get())["sheets"]), QStringList{"Sheet2"});

    // A sheet that does not exist fails the export and writes nothing.
    data->setSheets(cad::mcExportData_ExportSpecifiedSheets, {"Sheet7"});
    EXPECT_TRUE(save(*drawing, "C:\\out\\none.pdf", data.get()).isEmpty());
    EXPECT_EQ(errors, cad::mcGenericSaveError);
    EXPECT_FALSE(QFile::exists(scratch.filePath("out/none.pdf")));
}

TEST_F(SaveAsTest, OtherDrawingFormatsHoldTheCurrentSheet)
{
    ModelDocPtr drawing = open("S:\\layout.mcddrw");
    ASSERT_TRUE(drawing->activateSheet("Sheet1"));
    const QJsonObject d = save(*drawing, "C:\\out\\layout.dxf");
    EXPECT_EQ(list(d["sheets"]), QStringList{"Sheet1"});
    EXPECT_TRUE(d["preferences"].toObject().isEmpty());
    EXPECT_FALSE(d.contains("configurations"));
}

TEST_F(SaveAsTest, ViewerFormatFollowsTheSelectionPreference)
{
    ModelDocPtr drawing = open("S:\\layout.mcddrw");
    Preferences &prefs = app.preferences();
    prefs.setInteger(cad::mcGlimpseSaveAsSelectionOption, cad::mcGlimpseSaveAll);
    EXPECT_EQ(list(save(*drawing, "C:\\out\\a.glmp")["sheets"]).size(), 3);
    prefs.setInteger(cad::mcGlimpseSaveAsSelectionOption, cad::mcGlimpseSaveActive);
    EXPECT_EQ(list(save(*drawing, "C:\\out\\b.glmp")["sheets"]), QStringList{"Sheet2"});
    prefs.setInteger(cad::mcGlimpseSaveAsSelectionOption, cad::mcGlimpseSaveSelected);
    prefs.setStringList(cad::mcGlimpseModelSelectionList, {"Detail A", "Sheet1"});
    const QJsonObject d = save(*drawing, "C:\\out\\c.glmp");
    EXPECT_EQ(list(d["sheets"]), (QStringList{"Detail A", "Sheet1"}));
    EXPECT_EQ(list(d["preferences"].toObject()["mcGlimpseModelSelectionList"]), (QStringList{"Detail A", "Sheet1"}));
    EXPECT_EQ(d["preferences"].toObject()["mcGlimpseSaveAsSelectionOption"].toInt(), cad::mcGlimpseSaveSelected);

    ModelDocPtr part = open("S:\\bracket.mcdprt");
    prefs.setStringList(cad::mcGlimpseModelSelectionList, {"A/B\\C"});
    EXPECT_EQ(list(save(*part, "C:\\out\\p.gprt")["configurations"]), QStringList{"A/B\\C"});
    prefs.setInteger(cad::mcGlimpseSaveAsSelectionOption, cad::mcGlimpseSaveAll);
    EXPECT_EQ(list(save(*part, "C:\\out\\q.gprt")["configurations"]).size(), 3);
}

TEST_F(SaveAsTest, UnwritableExtensionFailsWithInvalidExtension)
{
    ModelDocPtr drawing = open("S:\\layout.mcddrw");
    ModelDocPtr part = open("S:\\bracket.mcdprt");
    observer.events.clear();
    for (const char *name : {"C:\\out\\x.stl", "C:\\out\\x.gprt", "C:\\out\\x.mcdprt", "C:\\out\\x.xyz"}) {
        EXPECT_TRUE(save(*drawing, name).isEmpty()) << name;
        EXPECT_EQ(errors, cad::mcFileSaveAsBadExtension) << name;
        EXPECT_EQ(warnings, 0) << name;
    }
    EXPECT_TRUE(save(*part, "C:\\out\\x.dxf").isEmpty());
    EXPECT_EQ(errors, 256);
    EXPECT_TRUE(save(*part, "C:\\out\\").isEmpty());
    EXPECT_EQ(errors, cad::mcFileNameEmpty);
    EXPECT_TRUE(observer.events.isEmpty());
    EXPECT_TRUE(QDir(scratch.filePath("out")).isEmpty());
}

TEST_F(SaveAsTest, OleDocumentFailsWithSaveAsNotSupportedAndTheWarning)
{
    ModelDocPtr drawing = open("S:\\embedded.mcddrw");
    ASSERT_TRUE(drawing);
    EXPECT_TRUE(save(*drawing, "C:\\out\\embedded.pdf").isEmpty());
    EXPECT_EQ(errors, 4096);
    EXPECT_EQ(warnings, 512);
    EXPECT_FALSE(QFile::exists(scratch.filePath("out/embedded.pdf")));
    // The extension check comes first.
    EXPECT_TRUE(save(*drawing, "C:\\out\\embedded.stl").isEmpty());
    EXPECT_EQ(errors, cad::mcFileSaveAsBadExtension);
}

TEST_F(SaveAsTest, MissingFolderOrUnmappedDriveIsAGenericError)
{
    ModelDocPtr part = open("S:\\shaft.mcdprt");
    EXPECT_TRUE(save(*part, "C:\\no such folder\\shaft.pdf").isEmpty());
    EXPECT_EQ(errors, cad::mcGenericSaveError);
    EXPECT_TRUE(save(*part, "Q:\\shaft.pdf").isEmpty());
    EXPECT_EQ(errors, cad::mcGenericSaveError);
}

TEST_F(SaveAsTest, NativeSaveWritesADocumentThatOpensAgain)
{
    ModelDocPtr part = open("S:\\bracket.mcdprt");
    ASSERT_TRUE(part->showConfiguration("A/B\\C"));
    ASSERT_TRUE(part->extension().saveAs("C:\\out\\copy.mcdprt", 0, cad::mcSaveAsOptions_Copy, nullptr, errors,
                                         warnings));
    auto openRequest = app.getOpenDocSpec("C:\\out\\copy.mcdprt");
    ModelDocPtr copy = app.openDoc7(*openRequest);
    ASSERT_TRUE(copy) << openRequest->error;
    EXPECT_NE(copy, part);
    EXPECT_EQ(copy->configurationNames(), part->configurationNames());
    EXPECT_EQ(copy->activeConfiguration(), "A/B\\C");
}
