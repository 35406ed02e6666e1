#pragma once

#include <QByteArray>
#include <QString>

// The 8-bit code page (Windows-1252) of macro files and of the error log,
// through the C library's converter.

// A byte the code page leaves undefined keeps its own value.
QString decodeWindows1252(const QByteArray &bytes);
// Characters the code page lacks become "?", as the Windows conversion writes them.
QByteArray encodeWindows1252(const QString &text);

// Printable ASCII only, for file headers of formats that allow no more:
// every other character (controls and line breaks too) becomes "_".
QByteArray printableAscii(const QString &text);
