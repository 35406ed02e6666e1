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

const QStringList &ScriptObject::parameterNames(const QString &) const
{
    static const QStringList none;
    return none;
}

} // namespace cadsim
