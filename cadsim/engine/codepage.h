#pragma once

#include <QByteArray>
#include <QString>

namespace cadsim {

// Macro files and the files macros write are 8-bit Windows-1252 text.
QString decodeWindows1252(const QByteArray &bytes);
// Characters the code page lacks become "?".
QByteArray encodeWindows1252(const QString &text);

} // namespace cadsim
