#pragma once

#include "host/variant.h"

#include <QString>
#include <functional>
#include <optional>

// Looks up the value of one option placeholder by its name (the text
// between the delimiters, with every leading opener and trailing closer
// removed). nullopt when the host does not know the name; host failures are
// thrown as HostError and end the expansion.
using PlaceholderLookup = std::function<std::optional<Variant>(const QString &name)>;

// One pass of option expansion over text. Every token from an opener to the
// next closer is replaced by the text of its value; a string value's CR LF
// pairs become "+vbLf+" because the value stands inside a quoted literal of
// the macro. A token is looked up once and all its occurrences get that
// value. Inserted values are not expanded again in the same pass. An opener
// without a closer after it ends the pass; the rest stays as it is.
// Runs in time linear in the length of text plus the inserted values.
QString ExpandDelimited(const QString &text, QChar open, QChar close, const PlaceholderLookup &lookup);

// The lookup of the "{...}" pass: "{#12}", "{##12}" and "{# 12}" ask for the
// number 12 ("#" signs trimmed, leading blanks skipped, 0 without digits);
// other names are asked for by name.
std::optional<Variant> lookupTaskValue(const QString &name,
                                       const std::function<std::optional<Variant>(const Variant &)> &byNameOrNumber);
