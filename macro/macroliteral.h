#pragma once

#include <QString>

// Makes a value safe to stand inside a quoted literal of the macro's 8-bit
// source: every UTF-16 unit above 255 becomes a ChrW(n) call joined to the
// surrounding literal text with " & ". The literal's own quotes come from the
// template, so the result starts or ends with an open piece of literal. When
// a line grows past 100 characters, the next join the encoder writes gets a
// line continuation. A value of units up to 255 comes back unchanged.
QString EncodeMacroLiteral(const QString &text);
