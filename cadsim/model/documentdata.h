#pragma once

#include "cadsim/geometry/feature.h"

#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

// The content of one stand-in document file: the small line-based text
// format of native parts, assemblies and drawings. Example:
//
//   Mecadra-Document: 1
//   Type: drawing
//   Sheet: Sheet1
//   Sheet: Sheet2
//   ActiveSheet: Sheet2
//
// Lines are "Key: value"; blank lines and lines starting with '#' are
// ignored. Keys: Type (part, assembly, drawing), Configuration,
// ActiveConfiguration, Component, VirtualComponent, Sheet, ActiveSheet,
// PaperSize, Orientation, FutureVersion (yes/no), OleObjects (yes/no), and
// the geometry:
//
//   Feature: box 80 40 10        a part's modelling step (see feature.h);
//                                before any Configuration line it belongs to
//                                every configuration, after one to that one
//   Component: shaft.mcdprt at 0 0 10 rotate 90
//                                an assembly's component, moved and turned
//                                about z (degrees); both parts optional
//   Model: bracket.mcdprt        the part a drawing's views show
//   View: front at 100 150 scale 0.5
//                                a view on the sheet above it: front, top,
//                                right or iso, its centre on the sheet (mm)
enum class DocumentType { None = 0, Part = 1, Assembly = 2, Drawing = 3 };

QString documentTypeName(DocumentType type);

struct ComponentEntry
{
    QString path; // as written: relative to the assembly's folder or absolute
    bool isVirtual = false;
    Placement placement;

    bool operator==(const ComponentEntry &) const = default;
};

// A feature of a part and the configuration it belongs to (empty: all).
struct FeatureEntry
{
    QString configuration;
    Feature feature;

    bool operator==(const FeatureEntry &) const = default;
};

// A view of a drawing's model on one of its sheets.
struct SheetView
{
    enum class Direction { Front, Top, Right, Iso };

    QString sheet;
    Direction direction = Direction::Front;
    double x = 0; // centre on the sheet, mm from the lower left corner
    double y = 0;
    double scale = 1;

    bool operator==(const SheetView &) const = default;
};

struct DocumentData
{
    DocumentType type = DocumentType::None;
    QStringList configurations;
    QString activeConfiguration;
    std::vector<ComponentEntry> components;
    QStringList sheets;
    QString activeSheet;
    int paperSize = 9;   // paper code of the document's own page set-up
    int orientation = 1; // 1 portrait, 2 landscape
    bool futureVersion = false;
    bool oleObjects = false;
    std::vector<FeatureEntry> features; // parts
    QString model;                      // drawings: the part the views show, as written
    std::vector<SheetView> views;       // drawings

    // The features of a configuration, shared ones first, in document order.
    std::vector<Feature> featuresOf(const QString &configuration) const;
    std::vector<SheetView> viewsOn(const QString &sheet) const;

    bool operator==(const DocumentData &) const = default;
};

struct ParseResult
{
    std::optional<DocumentData> data;
    QString error; // with the line number, when data is empty
};

// True when the text starts (after comments and blanks) with the format's
// header line; imports use it to tell our own text from foreign content.
bool looksLikeDocumentText(const QString &text);

// Parses a document; the active configuration and sheet default to the
// first ones, and a part or assembly without configurations gets "Default".
ParseResult parseDocument(const QString &text);

// Writes the text form that parseDocument reads back to equal data.
QString writeDocument(const DocumentData &data);

// Native extensions ("mcdprt", "mcdasm", "mcddrw") and the document type
// they stand for; None for any other extension.
DocumentType nativeTypeOfExtension(const QString &extension);

// Extensions that LoadFile4 imports, and the type the import becomes; None
// when the extension cannot be imported.
DocumentType importTypeOfExtension(const QString &extension);

// Extensions (lower case, no dot) that SaveAs can write for a type.
bool canExportTo(DocumentType type, const QString &extension);
