#pragma once

#include "cadsim/model/exportdescription.h"
#include "cadsim/model/imageencoding.h"
#include "cadsim/model/paperlayout.h"
#include "cadsim/model/projection.h"
#include "cadsim/model/sheetpainter.h"

#include <QByteArray>
#include <QJsonObject>
#include <QPageLayout>
#include <functional>
#include <optional>
#include <vector>

// How the pages of a PDF, an image or a DXF look: the paper with its
// margins, a drawing's own paper (which a print may scale onto another),
// the drawing style, the image options and the views each sheet or
// configuration shows.
struct SheetOptions
{
    QPageLayout layout = pageLayoutOf(9, 2);
    QSizeF sheetMm;
    SheetStyle style;
    ImageOptions image;
    std::function<std::vector<SheetPageView>(const QString &item)> views;
};

// Writes an export as a real file of its format, so that a user who opens it
// in a viewer sees a document: PDF pages, images, drawings and scenes. Solid
// formats are SolidExports' (solidexports.h). Formats without a public
// syntax become a text file with the description. The description itself (source, options, preferences) is
// carried where the format allows it: PDF metadata, a header comment.
class ExportWriter final
{
public:
    // description: exportDescriptionJson of the export. Empty when the file
    // could not be made (an image the encoder refused).
    static std::optional<QByteArray> write(const ExportDescription &export_, const QJsonObject &description,
                                           const SheetOptions &sheet = {});

    // The formats written with a syntax of their own (the rest are text).
    static bool hasOwnSyntax(const QString &format);
};
