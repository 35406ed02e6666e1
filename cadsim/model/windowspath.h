#pragma once

#include <QHash>
#include <QString>
#include <functional>

// Documents are named by Windows paths, as macros and the add-in hand them
// over; these helpers take such paths apart without touching the disk.
namespace winpath {

QString fileName(const QString &path);   // "C:\a\b.x" -> "b.x"
QString folder(const QString &path);     // "C:\a\b.x" -> "C:\a\" (with separator)
QString extension(const QString &path);  // "C:\a\b.X" -> "x" (lower case, no dot)
QString baseName(const QString &path);   // "C:\a\b.c.x" -> "b.c"
bool isAbsolute(const QString &path);    // drive letter, UNC or a native absolute path
QString join(const QString &folder, const QString &relative);
bool samePath(const QString &a, const QString &b); // case-insensitive, either separator

} // namespace winpath

// Turns a Windows path into a native one; an empty result means the path
// cannot be reached. The platform's drive map plugs in here.
using PathResolver = std::function<QString(const QString &windowsPath)>;

// A resolver over a drive-letter table (letter -> native folder). Native
// absolute paths pass through unchanged.
PathResolver makeDriveResolver(const QHash<QChar, QString> &drives);
