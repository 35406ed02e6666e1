#pragma once

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
// PaperSize, Orientation, FutureVersion (yes/no), OleObjects (yes/no).
enum class DocumentType { None = 0, Part = 1, Assembly = 2, Drawing = 3 };

QString documentTypeName(DocumentType type);

struct ComponentEntry
{
    QString path; // as written: relative to the assembly's folder or absolute
    bool isVirtual = false;

    bool operator==(const ComponentEntry &) const = default;
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
