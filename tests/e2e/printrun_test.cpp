// Print tasks from set-up to the printed documents: the mctask program as
// the host, the add-in module, the stand-in Mecadra printing to its
// printers, and the embedded vault.

#include <QRegularExpression>

#include "tests/e2e/privatecups.h"
#include "tests/e2e/programtasktest.h"

namespace {

class PrintRunTest : public ProgramTaskTest
{
protected:
    void SetUp() override
    {
        m_spool = m_work.filePath("spool.jsonl");
        m_env.insert("MCSIM_PRINTERS", "Office;Plotter");
        m_env.insert("MCSIM_SPOOL_FILE", m_spool);
        ProgramTaskTest::SetUp();
    }

    QStringList vaultFiles()
    {
        QStringList paths;
        for (const QJsonValue &row : ok({"vault", "ls", "V:\\", "--json"}).json().array())
            paths << row.toObject()["path"].toString();
        return paths;
    }
    QList<QJsonObject> spool() const
    {
        QList<QJsonObject> records;
        QFile file(m_spool);
        if (file.open(QIODevice::ReadOnly))
            for (const QByteArray &line : file.readAll().split('\n'))
                if (!line.trimmed().isEmpty())
                    records << QJsonDocument::fromJson(line).object();
        return records;
    }

    QString m_spool;
};

INSTANTIATE_TEST_SUITE_P(Backends, PrintRunTest, VaultBackends);

TEST_P(PrintRunTest, AnAssemblyPrintsWithItsDrawingsOnTheChosenPrinterAndPaperAndAddsNoFiles)
{
    QStringList add{"vault", "add"};
    for (const char *name : {"gearbox.mcdasm", "shaft.mcdprt", "cover.mcdprt", "layout.mcddrw"})
        add << QStringLiteral(MCTASK_SAMPLES "/") + name;
    ok(add + QStringList{"--to", "Gearbox"});
    ok({"vault", "ref", "V:\\Gearbox\\gearbox.mcdasm", "V:\\Gearbox\\shaft.mcdprt"});
    ok({"vault", "ref", "V:\\Gearbox\\gearbox.mcdasm", "V:\\Gearbox\\layout.mcddrw"});

    // Set up as a new task confirmed with "OK", then the administrator's choices.
    ok({"task", "create", "Plot", "--kind", "print"});
    ok({"task", "setup", "Plot"});
    ok({"task", "set", "Plot", "__printer_prname=Plotter", "__printer_defpapsize:int=9",
        "__printer_usedrwnfo:bool=false", "__printer_margintype:int=0", "__printer_autoselectrefstype:int=1"});
    const QStringList before = vaultFiles();
    ASSERT_EQ(before.size(), 4);

    const ProgramRun launched = ok({"task", "launch", "Plot", "V:\\Gearbox\\gearbox.mcdasm"});
    const QString id = launched.lastLine();
    const ProgramRun ran = ok({"task", "run", id, "--json"});
    EXPECT_EQ(ran.json().object()["status"], QJsonValue(7)) << ran.out.toStdString() << ran.err.toStdString();
    EXPECT_FALSE(ran.out.contains("Adding files to vault...")) << ran.out.toStdString();
    EXPECT_FALSE(ran.err.contains("Adding files to vault...")) << ran.err.toStdString();
    EXPECT_EQ(vaultFiles(), before);

    // The assembly and its drawing, not the part: one job each, as set up.
    const QList<QJsonObject> jobs = spool();
    QStringList documents;
    for (const QJsonObject &job : jobs) {
        documents << job["document"].toString().section(QRegularExpression("[\\\\/]"), -1);
        EXPECT_EQ(job["printer"], QJsonValue("Plotter"));
        EXPECT_EQ(job["paperSize"], QJsonValue(8)); // A3
        EXPECT_EQ(job["orientation"], QJsonValue(2)); // landscape
        EXPECT_EQ(job["copies"], QJsonValue(1));
        EXPECT_EQ(job["usePrinterMargins"], QJsonValue(true));
    }
    documents.sort();
    EXPECT_EQ(documents, (QStringList{"gearbox.mcdasm", "layout.mcddrw"}));

    // The details list the printed items with their printer.
    const ProgramRun details = ok({"task", "details", id});
    EXPECT_TRUE(details.out.contains("Printer")) << details.out.toStdString();
    const QStringList lines = details.out.split('\n');
    for (const char *name : {"gearbox.mcdasm", "layout.mcddrw"}) {
        const auto line = std::find_if(lines.begin(), lines.end(), [&](const QString &l) { return l.contains(name); });
        ASSERT_NE(line, lines.end()) << name << "\n" << details.out.toStdString();
        EXPECT_TRUE(line->contains("Plotter")) << line->toStdString();
    }
}

TEST_P(PrintRunTest, JobsForAPrintQueueReachThePrivateCupsServerAsPdfs)
{
    PrivateCups cups("McPdf");
    if (!cups.running())
        GTEST_SKIP() << "cupsd cannot run here; the stand-in's printer list stands in for the queues "
                        "(see the test above)";
    m_env.insert("CUPS_SERVER", cups.socket());
    ok({"vault", "add", QStringLiteral(MCTASK_SAMPLES "/gearbox.mcdasm"), QStringLiteral(MCTASK_SAMPLES "/layout.mcddrw"),
        "--to", "Gearbox"});
    ok({"vault", "ref", "V:\\Gearbox\\gearbox.mcdasm", "V:\\Gearbox\\layout.mcddrw"});
    ok({"task", "create", "Queue", "--kind", "print"});
    ok({"task", "setup", "Queue"});
    // A3 portrait whatever the drawing's own sheet says, custom margins in
    // millimetres, a header and a footer.
    ok({"task", "set", "Queue", "__printer_prname=McPdf", "__printer_defpapsize:int=9",
        "__printer_deforientation:int=0", "__printer_usedrwnfo:bool=false", "__printer_margintype:int=2",
        "__printer_margintop:real=30", "__printer_marginbottom:real=20", "__printer_marginleft:real=25",
        "__printer_marginright:real=15", "__printer_headertype:int=2", "__printer_headerleft=Plant 7 drawings",
        "__printer_headercenter=", "__printer_headerright=Internal use", "__printer_footertype:int=2",
        "__printer_footerleft=", "__printer_footercenter=Printed by the task host", "__printer_footerright="});

    const QString id = ok({"task", "launch", "Queue", "V:\\Gearbox\\gearbox.mcdasm", "--set", "__printer_copycount:int=2"})
                           .lastLine();
    const ProgramRun ran = ok({"task", "run", id, "--json"});
    EXPECT_EQ(ran.json().object()["status"], QJsonValue(7)) << ran.out.toStdString() << ran.err.toStdString();

    const QStringList jobs = cups.jobs(2);
    ASSERT_EQ(jobs.size(), 2) << jobs.join(',').toStdString() << cups.log().toStdString();
    for (const QString &job : jobs) {
        QFile pdf(QDir(cups.outFolder()).filePath(job));
        ASSERT_TRUE(pdf.open(QIODevice::ReadOnly)) << job.toStdString();
        EXPECT_TRUE(pdf.read(5) == "%PDF-") << job.toStdString();
        // The copies given at launch reach the queue.
        EXPECT_EQ(cups.copies(job), 2) << job.toStdString();
        pdf.close();

        // The page set-up the macro made: paper, orientation, header and
        // footer; one page per sheet of the drawing, one for the assembly.
        const QString path = pdf.fileName();
        const ProgramRun info = runProgram("pdfinfo", {path}, ProgramSetting(m_home.path()));
        EXPECT_TRUE(info.out.contains(QRegularExpression("Page size:\\s+842 x 1191 pts \\(A3\\)"))) << info.out.toStdString();
        const bool drawing = info.out.contains("layout.mcddrw");
        EXPECT_TRUE(info.out.contains(QRegularExpression(drawing ? "Pages:\\s+3\\n" : "Pages:\\s+1\\n")))
            << info.out.toStdString();
        const ProgramRun text = runProgram("pdftotext", {"-layout", path, "-"}, ProgramSetting(m_home.path()));
        EXPECT_TRUE(text.out.contains(QRegularExpression("Plant 7 drawings\\s+Internal use"))) << text.out.toStdString();
        EXPECT_TRUE(text.out.contains("Printed by the task host")) << text.out.toStdString();
        // The header starts 25 mm from the left edge.
        const ProgramRun boxes = runProgram("pdftotext", {"-bbox", "-f", "1", "-l", "1", path, "-"},
                                            ProgramSetting(m_home.path()));
        const QRegularExpressionMatch plant =
            QRegularExpression(R"re(<word xMin="([\d.]+)"[^>]*>Plant</word>)re").match(boxes.out);
        ASSERT_TRUE(plant.hasMatch()) << boxes.out.toStdString();
        EXPECT_NEAR(plant.captured(1).toDouble(), 25 * 72 / 25.4, 2);
    }
    const QList<QJsonObject> printed = spool();
    ASSERT_EQ(printed.size(), 2);
    for (const QJsonObject &job : printed) {
        EXPECT_EQ(job["printer"], QJsonValue("McPdf"));
        EXPECT_EQ(job["copies"], QJsonValue(2));
    }
}

} // namespace
