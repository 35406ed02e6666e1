#pragma once

#include <QByteArray>
#include <QString>

// The 8-bit code page (Windows-1252) that macro files and the error log are
// written in. Characters the code page lacks become "?", as the Windows
// conversion writes them.
QByteArray toWindows1252(const QString &text);
