#pragma once

#include <QHash>
#include <QString>

#include <functional>

// Helpers for Windows paths as the host and the macros use them: "\" (or
// "/") separates, drive letters and names compare case-insensitively.
namespace WindowsPath {

bool isSeparator(QChar c);
// "C:\..." or "C:/..." or "C:" (drive-rooted), or "\\server\share..." (UNC).
// A drive-relative "C:x" counts as rooted at its drive.
bool isAbsolute(const QString &path);
// Absolute, or starting at a separator ("\x", or a native "/x").
bool isRooted(const QString &path);
// "C" for "c:\x"; a null QChar when there is no drive letter.
QChar driveLetter(const QString &path);

// Appends more to base as a relative part: a leading "\" of more is dropped,
// so it lands under base; a more with a drive letter or UNC start replaces
// base. The result is canonical (see canonicalize).
QString append(const QString &base, const QString &more);

// "." components removed, ".." removes the component before it (never above
// the root), "/" becomes "\", doubled separators collapse. A trailing "\" is
// kept; "C:" becomes "C:\".
QString canonicalize(const QString &path);

// Case-insensitive comparison of two paths after canonicalize; a trailing
// "\" does not count.
bool equals(const QString &a, const QString &b);
int compare(const QString &a, const QString &b);

// The text after the last "\" (the whole path when there is none).
QString fileName(const QString &path);
// The text after the last "." of the file name, without the dot; empty when
// the file name has no ".".
QString extension(const QString &path);
// The path without the extension and its dot.
QString removeExtension(const QString &path);
// The file name without its extension: "C:\a\b.c.x" -> "b.c".
QString baseName(const QString &path);
// The path up to (not including) the last "\"; "C:\" for "C:\a".
QString parent(const QString &path);
// The path with a "\" at its end (an empty path stays empty).
QString addBackslash(const QString &path);
// The path with its trailing "\" removed, except for a drive root "C:\".
QString removeBackslash(const QString &path);

} // namespace WindowsPath

// Turns a Windows path into a native one; an empty result means the path
// cannot be reached. The platform's drive map plugs in here.
using PathResolver = std::function<QString(const QString &windowsPath)>;

// A resolver over a drive-letter table (letter -> native folder), for the
// stand-in and its tests. Native absolute paths pass through unchanged.
PathResolver makeDriveResolver(const QHash<QChar, QString> &drives);
