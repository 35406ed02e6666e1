#pragma once

#include <QJsonObject>
#include <QString>

// What every export stated (source, format, options, sheets or
// configurations), kept by the stand-in in a folder of its own outside any
// vault: one JSON file per exported file, named after a hash of the exported
// file's full native path. Tests and people read it back by that path.
namespace ExportRecords {

// $MCTASK_HOME/mcsim/exports.
QString defaultFolder();
// Creates the folder when missing; false when the record cannot be written.
bool write(const QString &folder, const QString &nativeTarget, const QJsonObject &description);
// The record of the file last exported to nativeTarget; empty when none.
QJsonObject read(const QString &folder, const QString &nativeTarget);

} // namespace ExportRecords
