#include "cadsim/engine/scriptobject.h"

namespace cadsim {

std::vector<ScriptValue> ScriptObject::enumerate()
{
    throw ScriptError(ErrNo::NoSuchMember);
}

ScriptValue ScriptObject::defaultValue(ScriptArgs &)
{
    throw ScriptError(ErrNo::NoSuchMember);
}

} // namespace cadsim
