#include "cadsim/model/documentdata.h"

#include <gtest/gtest.h>

TEST(DocumentData, ReadsEveryKeyAndWritesItBack)
{
    const QString text = QStringLiteral(
        "# comment\n"
        "Mecadra-Document: 1\n"
        "\n"
        "Type: assembly\n"
        "Configuration: Default\n"
        "Configuration: A/B\\C\n"
        "ActiveConfiguration: A/B\\C\n"
        "Component: sub\\shaft.mcdprt\n"
        "VirtualComponent: cover.mcdprt\n"
        "PaperSize: 8\n"
        "Orientation: 2\n"
        "OleObjects: yes\n");
    const ParseResult parsed = parseDocument(text);
    ASSERT_TRUE(parsed.data) << parsed.error.toStdString();
    const DocumentData &d = *parsed.data;
    EXPECT_EQ(d.type, DocumentType::Assembly);
    EXPECT_EQ(d.configurations, (QStringList{"Default", "A/B\\C"}));
    EXPECT_EQ(d.activeConfiguration, "A/B\\C");
    ASSERT_EQ(d.components.size(), 2u);
    EXPECT_EQ(d.components[0], (ComponentEntry{"sub\\shaft.mcdprt", false}));
    EXPECT_EQ(d.components[1], (ComponentEntry{"cover.mcdprt", true}));
    EXPECT_EQ(d.paperSize, 8);
    EXPECT_EQ(d.orientation, 2);
    EXPECT_TRUE(d.oleObjects);
    EXPECT_FALSE(d.futureVersion);

    const ParseResult again = parseDocument(writeDocument(d));
    ASSERT_TRUE(again.data) << again.error.toStdString();
    EXPECT_EQ(*again.data, d);
}

TEST(DocumentData, FillsDefaultConfigurationAndSheet)
{
    const auto part = parseDocument(QStringLiteral("Mecadra-Document: 1\nType: part\n"));
    ASSERT_TRUE(part.data);
    EXPECT_EQ(part.data->configurations, QStringList{"Default"});
    EXPECT_EQ(part.data->activeConfiguration, "Default");

    const auto drawing = parseDocument(QStringLiteral("Mecadra-Document: 1\nType: drawing\nSheet: S1\nSheet: S2\n"));
    ASSERT_TRUE(drawing.data);
    EXPECT_EQ(drawing.data->activeSheet, "S1");
    EXPECT_TRUE(drawing.data->configurations.isEmpty());
}

TEST(DocumentData, FutureVersionComesFromHeaderOrFlag)
{
    const auto byHeader = parseDocument(QStringLiteral("Mecadra-Document: 3\nType: part\n"));
    ASSERT_TRUE(byHeader.data);
    EXPECT_TRUE(byHeader.data->futureVersion);
    // A later "FutureVersion: no" must not clear what the header said.
    const auto both = parseDocument(QStringLiteral("Mecadra-Document: 2\nType: part\nFutureVersion: no\n"));
    ASSERT_TRUE(both.data);
    EXPECT_TRUE(both.data->futureVersion);
    const auto byFlag = parseDocument(QStringLiteral("Mecadra-Document: 1\nType: part\nFutureVersion: yes\n"));
    ASSERT_TRUE(byFlag.data);
    EXPECT_TRUE(byFlag.data->futureVersion);
}

TEST(DocumentData, RejectsMalformedDocumentsWithTheLine)
{
    struct Case { const char *text; const char *error; };
    const Case cases[] = {
        {"", "empty document"},
        {"Type: part\n", "line 1: missing"},
        {"Mecadra-Document: x\nType: part\n", "line 1: bad format version"},
        {"Mecadra-Document: 1\nType: gadget\n", "line 2: unknown type"},
        {"Mecadra-Document: 1\nType: part\nColour: red\n", "line 3: unknown key"},
        {"Mecadra-Document: 1\nType: part\njust words\n", "line 3: expected"},
        {"Mecadra-Document: 1\nConfiguration: A\n", "no Type"},
        {"Mecadra-Document: 1\nType: part\nSheet: S\n", "only drawings have sheets"},
        {"Mecadra-Document: 1\nType: part\nComponent: x.mcdprt\n", "only assemblies"},
        {"Mecadra-Document: 1\nType: drawing\nConfiguration: A\n", "a drawing has sheets only"},
        {"Mecadra-Document: 1\nType: part\nConfiguration: A\nActiveConfiguration: B\n", "\"B\" does not exist"},
        {"Mecadra-Document: 1\nType: drawing\nSheet: A\nActiveSheet: B\n", "\"B\" does not exist"},
        {"Mecadra-Document: 1\nType: part\nPaperSize: big\n", "PaperSize is not a number"},
        {"Mecadra-Document: 1\nType: part\nOleObjects: maybe\n", "yes or no"},
    };
    for (const Case &c : cases) {
        const ParseResult r = parseDocument(QString::fromUtf8(c.text));
        EXPECT_FALSE(r.data) << c.text;
        EXPECT_TRUE(r.error.contains(QString::fromUtf8(c.error))) << c.text << " gave " << r.error.toStdString();
    }
}

