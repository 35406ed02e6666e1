#pragma once

#include "cadsim/model/documentdata.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <cstdint>

class Preferences;

// What one export holds: the exported file shows it and the stand-in keeps
// it as a record, so that tests and people can see what was converted with
// which options.
struct ExportDescription
{
    QString target;        // the file name SaveAs was given
    QString format;        // target extension, lower case
    QString source;        // the document's path, or the imported file
    bool imported = false;
    DocumentType documentType = DocumentType::None;
    QStringList configurations; // parts and assemblies
    QStringList sheets;         // drawings
    std::int32_t version = 0;
    std::int32_t options = 0;
};

// The JSON object of a description with every export preference that
// shapes the format, and its value in prefs.
QJsonObject exportDescriptionJson(const ExportDescription &description, const Preferences &prefs);
