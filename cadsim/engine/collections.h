#pragma once

#include "cadsim/engine/scriptobject.h"

namespace cadsim {

// VBA's Collection ("New Collection"): 1-based items with optional text keys.
std::shared_ptr<ScriptObject> makeCollection();
// Scripting.Dictionary: keys in insertion order, text keys compared by CompareMode.
std::shared_ptr<ScriptObject> makeDictionary();

} // namespace cadsim
