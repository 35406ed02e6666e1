#pragma once

#include <QString>

namespace cadsim {

// The Like operator: "*" any run, "?" one character, "#" one digit, "[a-z]" / "[!a-z]" classes.
// A malformed pattern raises ScriptError 93.
bool likeMatch(const QString &text, const QString &pattern, bool caseInsensitive);

} // namespace cadsim
