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
    EXPECT_EQ(d.components[0], (ComponentEntry{"sub\\shaft.mcdprt", false, {}}));
    EXPECT_EQ(d.components[1], (ComponentEntry{"cover.mcdprt", true, {}}));
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
        {"Mecadra-Document: 1\nType: part\nFeature: sphere 10\n", "line 3: unknown feature \"sphere\""},
        {"Mecadra-Document: 1\nType: part\nFeature: box 10 20\n", "box needs three positive lengths"},
        {"Mecadra-Document: 1\nType: part\nFeature: box 10 -20 5\n", "box needs three positive lengths"},
        {"Mecadra-Document: 1\nType: part\nFeature: hole 10 5 at 1 2\n", "\"at\" needs three numbers"},
        {"Mecadra-Document: 1\nType: part\nFeature: cylinder 10 5 axis w\n", "axis must be x, y or z"},
        {"Mecadra-Document: 1\nType: part\nFeature: box 1 2 3 axis x\n", "unexpected \"axis\""},
        {"Mecadra-Document: 1\nType: part\nFeature: extrude 5 0 0 1 0\n", "at least three points"},
        {"Mecadra-Document: 1\nType: part\nFeature: extrude 5 0 0 1 0 1 1 2\n", "at least three points"},
        {"Mecadra-Document: 1\nType: assembly\nFeature: box 1 2 3\n", "only parts have features"},
        {"Mecadra-Document: 1\nType: assembly\nComponent: a.mcdprt at 1 x 3\n", "line 3: bad component"},
        {"Mecadra-Document: 1\nType: drawing\nView: front\n", "after its Sheet line"},
        {"Mecadra-Document: 1\nType: drawing\nSheet: S\nView: side\n", "bad view"},
        {"Mecadra-Document: 1\nType: drawing\nSheet: S\nView: top scale 0\n", "bad view"},
        {"Mecadra-Document: 1\nType: part\nModel: x.mcdprt\n", "only drawings"},
    };
    for (const Case &c : cases) {
        const ParseResult r = parseDocument(QString::fromUtf8(c.text));
        EXPECT_FALSE(r.data) << c.text;
        EXPECT_TRUE(r.error.contains(QString::fromUtf8(c.error))) << c.text << " gave " << r.error.toStdString();
    }
}


// Features belong to the configuration above them (or all before the first);
// placements and views survive a save.
TEST(DocumentData, GeometryReadsPerConfigurationAndWritesBack)
{
    const ParseResult part = parseDocument(QStringLiteral(
        "Mecadra-Document: 1\nType: part\n"
        "Feature: extrude 40 0 0 80 0 80 10 0 10 at 1 2 3\n"
        "Configuration: Plain\n"
        "Configuration: Drilled\n"
        "Feature: hole 12 10.5 at 50 0 20 axis y\n"
        "Feature: CYLINDER 8 4\n"
        "Configuration: Last\n"));
    ASSERT_TRUE(part.data) << part.error.toStdString();
    const DocumentData &d = *part.data;
    ASSERT_EQ(d.featuresOf("Plain").size(), 1u);
    const Feature outline = d.featuresOf("Plain")[0];
    EXPECT_EQ(outline.kind, Feature::Kind::Extrude);
    EXPECT_EQ(outline.outline.size(), 4u);
    EXPECT_EQ(outline.at, (std::array<double, 3>{1, 2, 3}));
    const std::vector<Feature> drilled = d.featuresOf("Drilled");
    ASSERT_EQ(drilled.size(), 3u);
    EXPECT_EQ(drilled[0], outline);
    EXPECT_TRUE(drilled[1].cuts());
    EXPECT_EQ(drilled[1].axis, 1);
    EXPECT_EQ(drilled[1].size[1], 10.5);
    EXPECT_EQ(drilled[2].kind, Feature::Kind::Cylinder);
    EXPECT_EQ(d.featuresOf("Last").size(), 1u);
    const ParseResult partAgain = parseDocument(writeDocument(d));
    ASSERT_TRUE(partAgain.data) << partAgain.error.toStdString();
    EXPECT_EQ(*partAgain.data, d);

    const ParseResult assembly = parseDocument(QStringLiteral(
        "Mecadra-Document: 1\nType: assembly\n"
        "Component: sub dir\\shaft.mcdprt at -30 30.5 0 rotate 90\n"
        "VirtualComponent: cover.mcdprt rotate 45\n"));
    ASSERT_TRUE(assembly.data) << assembly.error.toStdString();
    ASSERT_EQ(assembly.data->components.size(), 2u);
    EXPECT_EQ(assembly.data->components[0].path, "sub dir\\shaft.mcdprt");
    EXPECT_EQ(assembly.data->components[0].placement, (Placement{{-30, 30.5, 0}, 90}));
    EXPECT_EQ(assembly.data->components[1].placement, (Placement{{0, 0, 0}, 45}));
    EXPECT_EQ(*parseDocument(writeDocument(*assembly.data)).data, *assembly.data);

    const ParseResult drawing = parseDocument(QStringLiteral(
        "Mecadra-Document: 1\nType: drawing\nModel: bracket.mcdprt\n"
        "Sheet: One\nView: front at 100 150\nView: iso scale 0.5\nSheet: Two\nView: Top at 1 2 scale 3\n"));
    ASSERT_TRUE(drawing.data) << drawing.error.toStdString();
    EXPECT_EQ(drawing.data->model, "bracket.mcdprt");
    ASSERT_EQ(drawing.data->viewsOn("One").size(), 2u);
    EXPECT_EQ(drawing.data->viewsOn("One")[0], (SheetView{"One", SheetView::Direction::Front, 100, 150, 1}));
    EXPECT_EQ(drawing.data->viewsOn("Two"), (std::vector<SheetView>{{"Two", SheetView::Direction::Top, 1, 2, 3}}));
    EXPECT_EQ(*parseDocument(writeDocument(*drawing.data)).data, *drawing.data);
}
