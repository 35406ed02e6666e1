#pragma once

#include "cadsim/engine/scriptobject.h"

#include <QString>

#include <memory>

namespace cadsim {

// VBScript.RegExp: Pattern, Global, IgnoreCase, MultiLine; Test, Execute (a Matches collection
// of Match objects with Value, FirstIndex, Length and SubMatches) and Replace.
std::shared_ptr<ScriptObject> makeRegExp();

// The VBScript pattern written for QRegularExpression: "\uXXXX" escapes, and "$" that ends only
// the whole text unless multiLine.
QString translateVbScriptPattern(const QString &pattern, bool multiLine);

} // namespace cadsim
