// The conversion and print macro templates, filled in for the sample
// documents and run by the macro engine against the model.

#include "base/codepage.h"
#include "cadsim/engine/interpreter.h"
#include "cadsim/engine/parser.h"
#include "cadsim/model/cadconstants.h"
#include "cadsim/model/printspool.h"
#include "cadsim/model/scriptadapters.h"
#include "macro/testing/templatefill.h"
#include "modeltestsupport.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

using namespace cadsim;

namespace {

QString loadTemplate(const char *name)
{
    QFile f(QStringLiteral(MCTASK_TEMPLATES_DIR "/") + QLatin1String(name));
    if (!f.open(QIODevice::ReadOnly))
        return QString();
    return decodeWindows1252(f.readAll());
}

class TemplateRun : public ::testing::Test
{
protected:
    TemplateRun()
    {
        CadSettings settings = testSettings(scratch);
        settings.printers = {{"Office Laser", ""}, {"Plotter", ""}, {"Jammed", "Paper jam in tray 2."}};
        settings.spoolFile = scratch.filePath("spool.jsonl");
        model = std::make_shared<CadApplication>(testResolver(scratch), settings);
        model->addObserver(&observer);
        QDir(scratch.path()).mkpath("Vault");
    }

    void convertOptions(const QString &format, int outputItems, int fileItems)
    {
        options = conversionOptions(format, outputItems, fileItems);
    }

    // An option as its set-up page stores a text.
    void set(const QString &name, const QString &text) { options[name] = Variant::fromBStr(text); }

    void printOptions()
    {
        options.clear();
        for (const auto &[name, text] : std::initializer_list<std::pair<const char *, const char *>>{
                 {"ErrorLogPath", "Logs\\Print"},
                 {"__printer_prseltype", "0"},
                 {"__printer_prname", "Office Laser"},
                 {"__printer_usedrwnfo", "False"},
                 {"__printer_defpapsize", "10"},
                 {"__printer_deforientation", "1"},
                 {"__printer_margintype", "0"},
                 {"__printer_margintop", "0"},
                 {"__printer_marginbottom", "0"},
                 {"__printer_marginleft", "0"},
                 {"__printer_marginright", "0"},
                 {"__printer_headertype", "0"},
                 {"__printer_footertype", "0"},
                 {"__printer_copycount", ""}})
            set(name, text);
        for (const char *key : {"A", "B", "C", "D", "E", "A0", "A1", "A2", "A3", "A4", "DEF"})
            set(QStringLiteral("__printer_papsize_") + QLatin1String(key), "");
        for (const char *key : {"headerleft", "headercenter", "headerright", "footerleft", "footercenter",
                                "footerright"})
            set(QStringLiteral("__printer_") + QLatin1String(key), "");
    }

    // Runs the template's main for one file; false when the engine failed.
    bool run(const char *templateFile, const QString &file, const QString &cfgOrSheet = QString())
    {
        const QString text = loadTemplate(templateFile);
        if (text.isEmpty()) {
            ADD_FAILURE() << "template " << templateFile << " not found";
            return false;
        }
        try {
            std::unique_ptr<Module> module = Parser::parse(fillTemplate(text, options, file, cfgOrSheet));
            EngineHost host;
            host.resolvePath = testResolver(scratch);
            host.constants = cadConstantValues();
            host.globals.insert(QStringLiteral("application"),
                                ScriptValue::fromObject(std::make_shared<ScriptMacroHost>(
                                    ScriptCadApplication::create(model))));
            Interpreter interpreter(*module, host);
            interpreter.initialize();
            interpreter.call(QStringLiteral("main"));
            return true;
        } catch (const CompileException &e) {
            ADD_FAILURE() << "compile error: " << e.error().message.toStdString() << " line " << e.error().pos.line;
        } catch (const ScriptError &e) {
            ADD_FAILURE() << "run-time error " << e.number() << ": " << e.description().toStdString() << " line "
                          << e.pos().line;
        }
        return false;
    }

    QString native(const QString &windowsPath) const { return testResolver(scratch)(windowsPath); }

    QStringList logLines(const QString &folder)
    {
        QFile f(native(folder + "\\" + kTemplateInstanceGuid + ".log"));
        if (!f.open(QIODevice::ReadOnly))
            return {};
        QStringList lines = decodeWindows1252(f.readAll()).split(QStringLiteral("\r\n"));
        if (!lines.isEmpty() && lines.last().isEmpty())
            lines.removeLast();
        return lines;
    }
    QStringList convertLog() { return logLines("C:\\Vault\\Logs\\Convert"); }
    QStringList printLog() { return logLines("C:\\Vault\\Logs\\Print"); }

    QJsonObject exported(const QString &windowsPath) { return exportRecord(*model, native(windowsPath)); }

    static QStringList list(const QJsonValue &v)
    {
        QStringList out;
        for (const QJsonValue &x : v.toArray())
            out << x.toString();
        return out;
    }

    QStringList outputs() const { return QDir(native("C:\\Out")).entryList(QDir::Files, QDir::Name); }

    QList<PrintRecord> spool()
    {
        QFile f(model->spoolFile());
        return f.open(QIODevice::ReadOnly) ? readPrintSpool(f.readAll()) : QList<PrintRecord>();
    }

    QTemporaryDir scratch;
    std::shared_ptr<CadApplication> model;
    RecordingObserver observer;
    TemplateOptions options;
};

const QString kPdf = QStringLiteral("Adobe Portable Document Format (*.pdf)");

} // namespace

TEST_F(TemplateRun, DrawingOneFilePerSheet)
{
    convertOptions(kPdf, 2, 4);
    ASSERT_TRUE(run("convert.mcb", "S:\\layout.mcddrw"));
    EXPECT_EQ(outputs(), (QStringList{"layout_0.pdf", "layout_1.pdf", "layout_2.pdf"}));
    EXPECT_EQ(list(exported("C:\\Out\\layout_0.pdf")["sheets"]), QStringList{"Sheet1"});
    EXPECT_EQ(list(exported("C:\\Out\\layout_1.pdf")["sheets"]), QStringList{"Sheet2"});
    EXPECT_EQ(list(exported("C:\\Out\\layout_2.pdf")["sheets"]), QStringList{"Detail A"});
    EXPECT_TRUE(convertLog().isEmpty()) << convertLog().join('\n').toStdString();
    // The macro closed its document.
    EXPECT_TRUE(model->documents().empty());
    // The holder of the new folder is gone again.
    EXPECT_FALSE(QFile::exists(native("C:\\Out\\~$holder")));
}

TEST_F(TemplateRun, DrawingAllSheetsInOneFile)
{
    convertOptions(kPdf, 2, 2);
    set("OutputPath2", "C:\\Out\\Copy\\<Filename>-<Extension>");
    ASSERT_TRUE(run("convert.mcb", "S:\\layout.mcddrw"));
    EXPECT_EQ(outputs(), QStringList{"layout.pdf"});
    EXPECT_EQ(list(exported("C:\\Out\\layout.pdf")["sheets"]), (QStringList{"Sheet1", "Sheet2", "Detail A"}));
    EXPECT_EQ(list(exported("C:\\Out\\Copy\\layout-mcddrw.pdf")["sheets"]).size(), 3);
    EXPECT_EQ(observer.events.filter("saving:").size(), 2);
}

TEST_F(TemplateRun, SingleNamedSheetHasNoSuffix)
{
    convertOptions(kPdf, 8, 4);
    set("NamedSheet", "Det*");
    ASSERT_TRUE(run("convert.mcb", "S:\\layout.mcddrw"));
    EXPECT_EQ(outputs(), QStringList{"layout.pdf"});
    EXPECT_EQ(list(exported("C:\\Out\\layout.pdf")["sheets"]), QStringList{"Detail A"});

    set("NamedSheet", "Sheet[!1]");
    set("OutputPath", "C:\\Out\\<Filename> <Configuration>");
    ASSERT_TRUE(run("convert.mcb", "S:\\layout.mcddrw"));
    EXPECT_TRUE(QFile::exists(native("C:\\Out\\layout Sheet2.pdf")));

    set("NamedSheet", "Plan*");
    ASSERT_TRUE(run("convert.mcb", "S:\\layout.mcddrw"));
    EXPECT_EQ(convertLog(), QStringList{"Document 'S:\\layout.mcddrw' didn't contain any sheets named 'Plan*'."});
}

TEST_F(TemplateRun, ViewerFormatTakesThePatternOfTheTypeAndTheSelectedSheets)
{
    convertOptions("Glimpse (*.gprt;*.gasm;*.glmp)", 8, 2);
    set("NamedSheet", "Sheet#");
    ASSERT_TRUE(run("convert.mcb", "S:\\layout.mcddrw"));
    EXPECT_EQ(outputs(), QStringList{"layout.glmp"});
    EXPECT_EQ(list(exported("C:\\Out\\layout.glmp")["sheets"]), (QStringList{"Sheet1", "Sheet2"}));

    set("OutputConfs", "2");
    ASSERT_TRUE(run("convert.mcb", "S:\\bracket.mcdprt"));
    EXPECT_EQ(list(exported("C:\\Out\\bracket.gprt")["configurations"]).size(), 3);
    EXPECT_TRUE(convertLog().isEmpty()) << convertLog().join('\n').toStdString();
}

TEST_F(TemplateRun, NamedConfigurationsMatchWithLikeAndOptionsReachTheExport)
{
    convertOptions("IGES (*.igs)", 8, 4);
    set("NamedConf", "?a*");
    set("IgesExportWireframe", "True");
    set("IgesSystem", "3");
    ASSERT_TRUE(run("convert.mcb", "S:\\bracket.mcdprt"));
    EXPECT_EQ(outputs(), QStringList{"bracket.igs"});
    const QJsonObject d = exported("C:\\Out\\bracket.igs");
    EXPECT_EQ(list(d["configurations"]), QStringList{"Machined"});
    EXPECT_TRUE(d["preferences"].toObject()["mcIGESExportAsWireframe"].toBool());
    EXPECT_EQ(d["preferences"].toObject()["mcIGESSystem"].toInt(), 3);
}

TEST_F(TemplateRun, VirtualComponentIsConvertedToo)
{
    convertOptions("STL (*.stl)", 4, 4);
    ASSERT_TRUE(run("convert.mcb", "S:\\gearbox.mcdasm"));
    EXPECT_EQ(outputs(), (QStringList{"cover.stl", "gearbox.stl"}));
    EXPECT_EQ(exported("C:\\Out\\cover.stl")["source"].toString(), "S:\\cover.mcdprt");
    EXPECT_TRUE(model->documents().empty());
}

TEST_F(TemplateRun, ImportedFileIsNamedAfterItself)
{
    convertOptions(kPdf, 4, 4);
    ASSERT_TRUE(run("convert.mcb", "S:\\flange.igs"));
    EXPECT_EQ(outputs(), QStringList{"flange.pdf"});
    EXPECT_TRUE(exported("C:\\Out\\flange.pdf")["imported"].toBool());
}

TEST_F(TemplateRun, FileWithCharactersBeyondLatin1)
{
    // The path reaches the macro as a literal with ChrW parts.
    const QString folder = QStringLiteral("C:\\Teile \u0416");
    ASSERT_TRUE(QDir().mkpath(native(folder)));
    ASSERT_TRUE(QFile::copy(QStringLiteral(MCTASK_SAMPLES_DIR "/bracket.mcdprt"),
                            native(folder + QStringLiteral("\\Welle \u03A9.mcdprt"))));
    convertOptions(kPdf, 4, 4);
    set("OutputPath", "<Path>\\<Filename>");
    ASSERT_TRUE(run("convert.mcb", folder + QStringLiteral("\\Welle \u03A9.mcdprt")));
    EXPECT_EQ(exported(folder + QStringLiteral("\\Welle \u03A9.pdf"))["source"].toString(),
              folder + QStringLiteral("\\Welle \u03A9.mcdprt"));
    EXPECT_TRUE(convertLog().isEmpty()) << convertLog().join('\n').toStdString();
}

TEST_F(TemplateRun, ConversionFailuresAreLogged)
{
    convertOptions(kPdf, 2, 4);
    ASSERT_TRUE(run("convert.mcb", "S:\\notes.xyz"));
    ASSERT_TRUE(run("convert.mcb", "S:\\newer.mcdprt"));
    ASSERT_TRUE(run("convert.mcb", "S:\\missing.mcdprt"));
    ASSERT_TRUE(run("convert.mcb", "S:\\embedded.mcddrw"));
    set("FileFormat", "STL (*.stl)");
    set("OutputSheets", "4");
    ASSERT_TRUE(run("convert.mcb", "S:\\layout.mcddrw"));
    EXPECT_EQ(convertLog(),
              (QStringList{
                  "The file extension 'xyz' is not supported.",
                  "Document 'S:\\newer.mcdprt' is future version.",
                  "Method call ModelDoc2::OpenDoc7 for document 'S:\\missing.mcdprt' failed. Error code 2 returned.",
                  "Method call ModelDocExtension::SaveAs for document 'C:\\Out\\embedded.pdf' and sheet 'Sheet1' "
                  "failed. Error code 4096 returned.",
                  "This document contains OLE objects. Such objects can't be converted outside of Mecadra. Please "
                  "open the document and perform the conversion from Mecadra.",
                  "The file 'S:\\layout.mcddrw' and sheet 'Sheet2' can't be converted to the file extension '.stl'.",
              }));
    EXPECT_TRUE(outputs().isEmpty());
}

TEST_F(TemplateRun, PrintDrawingSheetWithMarginsHeaderAndFooter)
{
    printOptions();
    set("__printer_margintype", "2");
    set("__printer_margintop", "10");
    set("__printer_marginbottom", "20");
    set("__printer_marginleft", "12.5");
    set("__printer_marginright", "5");
    set("__printer_headertype", "2");
    set("__printer_headerleft", "Left");
    set("__printer_headerright", "Right");
    set("__printer_footertype", "2");
    set("__printer_footercenter", "Page");
    set("__printer_copycount", "3");
    set("__printer_defpapsize", "10");
    set("__printer_deforientation", "0");
    ASSERT_TRUE(run("print.mcb", "S:\\layout.mcddrw", "detail a"));
    const QList<PrintRecord> records = spool();
    ASSERT_EQ(records.size(), 1);
    const PrintRecord &r = records[0];
    EXPECT_EQ(r.printer, "Office Laser");
    EXPECT_EQ(r.sheets, QStringList{"Detail A"});
    // The drawing's own A3 landscape is overridden by the task's A4 portrait.
    EXPECT_EQ(r.paperSize, 9);
    EXPECT_EQ(r.orientation, 1);
    EXPECT_FALSE(r.usePrinterMargins);
    EXPECT_DOUBLE_EQ(r.marginTop, 0.01);
    EXPECT_DOUBLE_EQ(r.marginBottom, 0.02);
    EXPECT_DOUBLE_EQ(r.marginLeft, 0.0125);
    EXPECT_DOUBLE_EQ(r.marginRight, 0.005);
    EXPECT_EQ(r.header, (std::array<QString, 3>{"Left", "", "Right"}));
    EXPECT_EQ(r.footer, (std::array<QString, 3>{"", "Page", ""}));
    EXPECT_EQ(r.copies, 3);
    EXPECT_EQ(r.pageSetupInUse, cad::mcPageSetupInUse_Document);
    EXPECT_TRUE(printLog().isEmpty()) << printLog().join('\n').toStdString();
    EXPECT_TRUE(observer.events.contains("printed:layout.mcddrw"));
}

TEST_F(TemplateRun, PrintPaperCodesAndPrinterByPaperSize)
{
    printOptions();
    set("__printer_usedrwnfo", "True");
    set("__printer_prseltype", "2");
    set("__printer_papsize_A", "Plotter");
    set("__printer_papsize_A4", "Office Laser");
    const struct { const char *code; const char *printer; int paper; } cases[] = {
        {"0", "Plotter", 262}, {"1", "Plotter", 262}, {"10", "Office Laser", 9}, {"11", "Office Laser", 77}};
    for (const auto &c : cases) {
        set("__printer_defpapsize", c.code);
        set("__printer_deforientation", "0");
        ASSERT_TRUE(run("print.mcb", "S:\\bracket.mcdprt", "Default"));
    }
    // A drawing keeps its own paper and orientation when the task says so.
    ASSERT_TRUE(run("print.mcb", "S:\\layout.mcddrw"));
    const QList<PrintRecord> records = spool();
    ASSERT_EQ(records.size(), 5);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(records[i].printer, cases[i].printer) << cases[i].code;
        EXPECT_EQ(records[i].paperSize, cases[i].paper) << cases[i].code;
        EXPECT_EQ(records[i].orientation, 1) << cases[i].code;
        EXPECT_TRUE(records[i].usePrinterMargins);
        EXPECT_EQ(records[i].configuration, "Default");
    }
    EXPECT_EQ(records[4].paperSize, 8);
    EXPECT_EQ(records[4].orientation, 2);
    EXPECT_EQ(records[4].sheets, (QStringList{"Sheet1", "Sheet2", "Detail A"}));
}

TEST_F(TemplateRun, PrintFailuresAreLogged)
{
    printOptions();
    set("__printer_prname", "");
    ASSERT_TRUE(run("print.mcb", "S:\\bracket.mcdprt"));
    ASSERT_TRUE(run("print.mcb", "S:\\bracket.mcdprt", "Machined"));
    ASSERT_TRUE(run("print.mcb", "S:\\layout.mcddrw", "Sheet1"));
    set("__printer_prname", "Ghost");
    ASSERT_TRUE(run("print.mcb", "S:\\shaft.mcdprt"));
    set("__printer_prname", "Jammed");
    ASSERT_TRUE(run("print.mcb", "S:\\shaft.mcdprt"));
    EXPECT_EQ(printLog(),
              (QStringList{
                  "Could not print document 'S:\\bracket.mcdprt'. No printer was selected.",
                  "Could not print document 'S:\\bracket.mcdprt' and configuration 'Machined'. No printer was selected.",
                  "Could not print document 'S:\\layout.mcddrw' and sheet 'Sheet1'. No printer was selected.",
                  "The printer 'Ghost' for the Document  'S:\\shaft.mcdprt' is not a valid printer.",
                  "Could not print file 'S:\\shaft.mcdprt'. The following errors occured: ",
                  "Paper jam in tray 2.",
                  "",
              }));
    EXPECT_TRUE(spool().isEmpty());
    EXPECT_TRUE(model->documents().empty());
}
