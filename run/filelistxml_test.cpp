#include "run/filelistxml.h"

#include <gtest/gtest.h>

namespace {

QString written(const std::vector<FileRecord> &records, std::int32_t taskType)
{
    QString xml;
    EXPECT_EQ(FileListXml::write(records, taskType, xml), S_OK);
    return xml;
}

FileRecord selected(std::int32_t docId, std::int32_t projId, const QString &path, std::int32_t version)
{
    FileRecord record;
    record.docId = docId;
    record.projId = projId;
    record.path = path;
    record.version = version;
    return record;
}

FileRecord output(const std::shared_ptr<FileRecord> &source, const QString &path, const QString &conf)
{
    FileRecord record;
    record.source = source;
    record.path = path;
    record.conf = conf;
    record.docId = 99; // the output's own ids never reach the list
    record.version = 42;
    return record;
}

TEST(FileListXmlTest, SelectionListHasTheExactShape)
{
    const std::vector<FileRecord> records{selected(5, 2, QStringLiteral("V:\\A\\p.mcdprt"), 3),
                                          selected(-1, 0, QStringLiteral("V:\\b.mcddrw"), -1)};
    EXPECT_EQ(written(records, 1),
              QStringLiteral("<sels>"
                             "<sel><doc_id>5</doc_id><proj_id>2</proj_id><path>V:\\A\\p.mcdprt</path><ver>3</ver></sel>"
                             "<sel><doc_id>-1</doc_id><proj_id>0</proj_id><path>V:\\b.mcddrw</path><ver>-1</ver></sel>"
                             "</sels>"));
    EXPECT_EQ(written({}, 1), QStringLiteral("<sels/>"));
}

TEST(FileListXmlTest, ConversionOutputsCarryTheSourceAndTheProducedFile)
{
    auto source = std::make_shared<FileRecord>(selected(7, 3, QStringLiteral("V:\\p.mcdprt"), 4));
    FileRecord log = output(source, QStringLiteral("V:\\logs\\x.log"), QString());
    log.isErrorLog = true;
    const std::vector<FileRecord> records{output(source, QStringLiteral("V:\\out\\p.pdf"), QStringLiteral("Default")),
                                          log,
                                          output(source, QStringLiteral("V:\\out\\p.step"), QString())};
    EXPECT_EQ(written(records, 1),
              QStringLiteral("<sels>"
                             "<sel><doc_id>7</doc_id><proj_id>3</proj_id><path>V:\\p.mcdprt</path><ver>4</ver>"
                             "<conf>Default</conf><extra>V:\\out\\p.pdf</extra></sel>"
                             "<sel><doc_id>7</doc_id><proj_id>3</proj_id><path>V:\\p.mcdprt</path><ver>4</ver>"
                             "<conf></conf><extra>V:\\out\\p.step</extra></sel>"
                             "</sels>"));
}

TEST(FileListXmlTest, PrintRunWritesExtraOnlyForPrintEntries)
{
    auto source = std::make_shared<FileRecord>(selected(1, 1, QStringLiteral("V:\\d.mcddrw"), 2));
    FileRecord printed;
    printed.source = source;
    printed.isPrintEntry = true;
    printed.info = QStringLiteral("Office Printer");
    printed.conf = QStringLiteral("Sheet1");
    const std::vector<FileRecord> records{printed, output(source, QStringLiteral("V:\\d.pdf"), QStringLiteral("S2"))};

    const auto back = FileListXml::read(written(records, 2));
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(back[0].info, QStringLiteral("Office Printer"));
    EXPECT_EQ(back[0].conf, QStringLiteral("Sheet1"));
    EXPECT_EQ(back[1].info, QString());
    EXPECT_EQ(back[1].conf, QStringLiteral("S2"));
    EXPECT_FALSE(written(records, 2).contains(QStringLiteral("V:\\d.pdf")));
}

TEST(FileListXmlTest, WrittenListsReadBackIdentically)
{
    auto source = std::make_shared<FileRecord>(
        selected(2147483647, -2147483647 - 1, QStringLiteral("V:\\R&D <new>\\\"Maß\" 'x' \U0001F600.mcdasm"), 0));
    std::vector<FileRecord> records{*source,
                                    output(source, QStringLiteral("V:\\out\\a&b.pdf"), QStringLiteral("<Conf> & \"1\"")),
                                    selected(3, 4, QStringLiteral("  leading and trailing  "), 12)};
    const QString xml = written(records, 1);
    const auto back = FileListXml::read(xml);
    ASSERT_EQ(back.size(), 3u);
    for (const FileRecord &r : back)
        EXPECT_EQ(r.source, nullptr);
    EXPECT_EQ(back[0].docId, 2147483647);
    EXPECT_EQ(back[0].projId, -2147483647 - 1);
    EXPECT_EQ(back[0].path, source->path);
    EXPECT_EQ(back[0].version, 0);
    EXPECT_EQ(back[1].docId, 2147483647);
    EXPECT_EQ(back[1].path, source->path);
    EXPECT_EQ(back[1].conf, QStringLiteral("<Conf> & \"1\""));
    EXPECT_EQ(back[1].info, QStringLiteral("V:\\out\\a&b.pdf"));
    EXPECT_EQ(back[2].path, QStringLiteral("  leading and trailing  "));
    EXPECT_EQ(back[2].version, 12);

    // A selection list read back is written out the same again.
    const std::vector<FileRecord> selection{back[0], back[2]};
    const QString selectionXml = written(selection, 1);
    EXPECT_EQ(written(FileListXml::read(selectionXml), 1), selectionXml);
}

TEST(FileListXmlTest, ReadingFindsSelAnywhereAndToleratesOddChildren)
{
    const auto records = FileListXml::read(QStringLiteral(
        "<?xml version=\"1.0\"?><root><group>"
        "<sel><ver> 12abc</ver><unknown>zz</unknown><path>V:\\a.mcdprt</path><path>V:\\b.mcdprt</path></sel>"
        "</group><sel/><SEL><path>ignored, names are case-sensitive</path></SEL>"
        "<sel><doc_id>x</doc_id><proj_id>-7</proj_id><conf>C</conf></sel></root>"));
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[0].version, 12);
    EXPECT_EQ(records[0].path, QStringLiteral("V:\\b.mcdprt")); // the last one wins
    EXPECT_EQ(records[1].path, QString());
    EXPECT_EQ(records[1].docId, 0);
    EXPECT_EQ(records[1].altVersion, -1);
    EXPECT_EQ(records[2].docId, 0);
    EXPECT_EQ(records[2].projId, -7);
    EXPECT_EQ(records[2].conf, QStringLiteral("C"));
}

TEST(FileListXmlTest, TextThatIsNotWellFormedGivesAnEmptyList)
{
    for (const QString &bad : {QString(), QStringLiteral("not xml"), QStringLiteral("<sels><sel><path>a</path>"),
                               QStringLiteral("<sels><sel></sels>"), QStringLiteral("<sels>&bogus;</sels>"),
                               QStringLiteral("<sels><sel><path>a</path></sel></sels><sels/>"),
                               QStringLiteral("\x01\x02<<<>>>")}) {
        EXPECT_TRUE(FileListXml::read(bad).empty()) << bad.toStdString();
    }
}

// A damaged variable nested 200,000 levels deep used to take the DOM
// minutes and then overflow its stack; now it is refused before any tree is
// built. Depth within the limit still reads, with the sel found anywhere.
TEST(FileListXmlTest, DeeplyNestedListsAreRefusedBeforeTheTree)
{
    auto nested = [](int depth, const QString &inner) {
        return QStringLiteral("<a>").repeated(depth) + inner + QStringLiteral("</a>").repeated(depth);
    };
    const QString sel = QStringLiteral("<sel><path>V:\\deep.mcdprt</path></sel>");
    EXPECT_TRUE(FileListXml::read(nested(200000, sel)).empty());
    EXPECT_TRUE(FileListXml::read(nested(FileListXml::MaxDepth - 1, sel)).empty()); // sel's child is one too deep
    const auto records = FileListXml::read(nested(FileListXml::MaxDepth - 2, sel));
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].path, QStringLiteral("V:\\deep.mcdprt"));
    // Unclosed depth is counted as it opens: no need to reach the end.
    EXPECT_FALSE(FileListXml::withinDepth(QStringLiteral("<a>").repeated(FileListXml::MaxDepth + 1), FileListXml::MaxDepth));
}

TEST(FileListXmlTest, EveryProperPrefixOfAListIsRejected)
{
    auto source = std::make_shared<FileRecord>(selected(7, 3, QStringLiteral("V:\\p.mcdprt"), 4));
    const QString xml = written({*source, output(source, QStringLiteral("V:\\o.pdf"), QStringLiteral("c"))}, 1);
    ASSERT_EQ(FileListXml::read(xml).size(), 2u);
    for (qsizetype n = 0; n < xml.size(); ++n)
        ASSERT_TRUE(FileListXml::read(xml.left(n)).empty()) << n;
}

TEST(FileListXmlTest, ValuesXmlCannotCarryFailTheWrite)
{
    auto source = std::make_shared<FileRecord>(selected(7, 3, QStringLiteral("V:\\p.mcdprt"), 4));
    QString xml = QStringLiteral("stale");
    EXPECT_EQ(FileListXml::write({output(source, QStringLiteral("V:\\o.pdf"), QStringLiteral("bad\x01"))}, 1, xml),
              E_INVALIDARG);
    EXPECT_TRUE(xml.isEmpty());
    // The same record in a print run writes no path, so it cannot fail there.
    EXPECT_EQ(FileListXml::write({output(source, QStringLiteral("V:\\o\x02.pdf"), QString())}, 2, xml), S_OK);
    FileRecord log = output(source, QStringLiteral("V:\\bad\x03.log"), QString());
    log.isErrorLog = true;
    EXPECT_EQ(FileListXml::write({log}, 1, xml), S_OK);

    EXPECT_TRUE(FileListXml::isXmlText(QStringLiteral("tab\tline\nret\r \U0001F600 \u00E9")));
    for (const QString &bad : {QString(QChar(0)), QString(QChar(0x1F)), QString(QChar(0xFFFE)),
                               QString(QChar(0xFFFF)), QString(QChar(0xD800)), QString(QChar(0xDC00)),
                               QString(QChar(0xDC00)) + QChar(0xD800)})
        EXPECT_FALSE(FileListXml::isXmlText(QStringLiteral("a") + bad + QStringLiteral("b")));
}

} // namespace
