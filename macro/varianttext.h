#pragma once

#include "host/variant.h"

#include <QLocale>
#include <QString>

// The text of a task value as it goes into a macro: integers in decimal,
// reals with six decimals and "." as separator, booleans "True"/"False",
// strings as they are, dates in the given locale's short form; anything else
// (empty, null, arrays, unknown types) gives the empty text.
QString VariantToText(const Variant &value, const QLocale &locale = QLocale::system());
