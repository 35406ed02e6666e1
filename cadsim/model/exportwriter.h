#pragma once

#include "cadsim/model/exportdescription.h"

#include <QByteArray>
#include <QJsonObject>

// Writes an export as a real file of its format, so that a user who opens it
// in a viewer sees a document: PDF pages, images, drawings and scenes. Solid
// formats are SolidExports' (solidexports.h). Formats without a public
// syntax become a text file with the description. The description itself (source, options, preferences) is
// carried where the format allows it: PDF metadata, a header comment.
class ExportWriter final
{
public:
    // description: exportDescriptionJson of the export.
    static QByteArray write(const ExportDescription &export_, const QJsonObject &description);

    // The formats written with a syntax of their own (the rest are text).
    static bool hasOwnSyntax(const QString &format);
};
