#include "cadsim/model/cadapplication.h"
#include "cadsim/model/cadconstants.h"
#include "cadsim/model/printspool.h"
#include "modeltestsupport.h"

#include <gtest/gtest.h>

namespace {

class PrintTest : public ::testing::Test
{
protected:
    PrintTest() : app(testResolver(scratch), settings())
    {
        app.setSpoolFile(scratch.filePath("spool.jsonl"));
        app.addObserver(&observer);
    }

    static CadSettings settings()
    {
        CadSettings s;
        s.printers = {{"Office Laser", ""}, {"Plotter", ""}, {"Jammed", "Paper jam in tray 2."}};
        return s;
    }

    ModelDocPtr open(const QString &path)
    {
        auto openRequest = app.getOpenDocSpec(path);
        return app.openDoc7(*openRequest);
    }

    QList<PrintRecord> spool()
    {
        QFile f(app.spoolFile());
        return f.open(QIODevice::ReadOnly) ? readPrintSpool(f.readAll()) : QList<PrintRecord>();
    }

    QTemporaryDir scratch;
    CadApplication app;
    RecordingObserver observer;
};

} // namespace

TEST_F(PrintTest, PrinterNotInTheListReadsBackAsTheCurrentOne)
{
    ModelDocPtr doc = open("S:\\shaft.mcdprt");
    EXPECT_EQ(doc->printer(), "Office Laser"); // the first printer is the default
    // Printer names compare without case and read back as they were set.
    doc->setPrinter("plotter");
    EXPECT_EQ(doc->printer(), "plotter");
    doc->setPrinter("Nowhere Printer");
    EXPECT_EQ(doc->printer(), "plotter");
    doc->setPrinter("");
    EXPECT_EQ(doc->printer(), "plotter");

    // With no printers at all every name reads back empty.
    app.setPrinters({});
    ModelDocPtr other = open("S:\\bracket.mcdprt");
    other->setPrinter("Office Laser");
    EXPECT_EQ(other->printer(), "");
}

TEST_F(PrintTest, EachPrintAppendsOneRecordAndSendsThePrintEvent)
{
    ModelDocPtr drawing = open("S:\\layout.mcddrw");
    ModelDocPtr part = open("S:\\bracket.mcdprt");
    observer.events.clear();
    // Margins, header and footer reach the record through the print template's run.
    drawing->setPrinter("Plotter");
    ASSERT_TRUE(drawing->extension().printOut2(std::vector<std::int32_t>{3, 1}, 2, false, "PLOTTER", ""));

    part->pageSetup().paperSize = 262;
    part->pageSetup().orientation = 1;
    ASSERT_TRUE(part->showConfiguration("Default"));
    ASSERT_TRUE(part->extension().printOut2(std::nullopt, 1, true, "", "C:\\p.prn"));

    const QList<PrintRecord> records = spool();
    ASSERT_EQ(records.size(), 2);
    const PrintRecord &r = records[0];
    EXPECT_EQ(r.document, "S:\\layout.mcddrw");
    EXPECT_EQ(r.printer, "Plotter");
    EXPECT_EQ(r.paperSize, 8);   // the drawing's own page set-up
    EXPECT_EQ(r.orientation, 2);
    EXPECT_EQ(r.sheets, (QStringList{"Detail A", "Sheet1"}));
    EXPECT_EQ(r.copies, 2);

    const PrintRecord &p = records[1];
    EXPECT_EQ(p.printer, "Office Laser"); // empty printer argument: the document's
    EXPECT_EQ(p.paperSize, 262);
    EXPECT_EQ(p.configuration, "Default");
    EXPECT_TRUE(p.sheets.isEmpty());
    EXPECT_TRUE(p.collate);
    EXPECT_EQ(p.printToFile, "C:\\p.prn");

    EXPECT_EQ(observer.events, (QStringList{"printed:layout.mcddrw", "printed:bracket.mcdprt"}));
    EXPECT_TRUE(app.takeErrorMessages().isEmpty());
}

TEST_F(PrintTest, FailedPrintsLeaveMessagesAndNoRecord)
{
    ModelDocPtr drawing = open("S:\\layout.mcddrw");
    observer.events.clear();
    EXPECT_FALSE(drawing->extension().printOut2(std::nullopt, 1, false, "Jammed", ""));
    EXPECT_FALSE(drawing->extension().printOut2(std::nullopt, 1, false, "Ghost", ""));
    EXPECT_FALSE(drawing->extension().printOut2(std::vector<std::int32_t>{4}, 1, false, "Plotter", ""));
    EXPECT_FALSE(drawing->extension().printOut2(std::nullopt, 0, false, "Plotter", ""));
    EXPECT_EQ(app.takeErrorMessages(),
              (QStringList{"Paper jam in tray 2.", "The printer 'Ghost' is not available.", "Sheet 4 does not exist.",
                           "The number of copies must be at least 1."}));
    // Reading the messages clears them.
    EXPECT_TRUE(app.takeErrorMessages().isEmpty());
    EXPECT_TRUE(spool().isEmpty());
    EXPECT_TRUE(observer.events.isEmpty());

    app.setSpoolFile(scratch.filePath("missing/spool.jsonl"));
    EXPECT_FALSE(drawing->extension().printOut2(std::nullopt, 1, false, "Plotter", ""));
    EXPECT_EQ(app.takeErrorMessages(), QStringList{"The print job for 'S:\\layout.mcddrw' could not be spooled."});
}

TEST(PrintSpool, RecordsSurviveTheRoundTripAndJunkLinesAreSkipped)
{
    PrintRecord r;
    r.document = "C:\\a \"quoted\".mcddrw";
    r.printer = "P";
    r.paperSize = 77;
    r.header = {"l", "c\tx", "r"};
    r.sheets = {"S1"};
    r.copies = 3;
    const QByteArray spool = printRecordLine(r) + "not json\n" + printRecordLine(PrintRecord{});
    EXPECT_EQ(printRecordLine(r).count('\n'), 1);
    const QList<PrintRecord> back = readPrintSpool(spool);
    ASSERT_EQ(back.size(), 2);
    EXPECT_EQ(back[0], r);
    EXPECT_EQ(back[1], PrintRecord{});
}
