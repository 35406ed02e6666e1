#pragma once

#include "cadsim/engine/scriptobject.h"

namespace cadsim {

// The Err object of a macro: the last trapped run-time error.
class ErrObject final : public ScriptObject {
public:
    QString typeName() const override { return QStringLiteral("ErrObject"); }
    ScriptValue invoke(const QString &member, CallKind kind, ScriptArgs &args) override;
    ScriptValue defaultValue(ScriptArgs &args) override;

    void set(const ScriptError &error);
    void clear();
    int number() const { return m_number; }
    const QString &description() const { return m_description; }

private:
    int m_number = 0;
    QString m_description;
    QString m_source;
};

} // namespace cadsim
