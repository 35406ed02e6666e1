#pragma once

#include "cadsim/engine/scriptobject.h"

namespace cadsim {

// The Err object of a macro: the last trapped run-time error.
class ErrObject final : public ScriptObject {
public:
    QString typeName() const override { return QStringLiteral("ErrObject"); }
    ScriptValue invoke(const QString &member, CallKind kind, ScriptArgs &args) override;
    ScriptValue defaultValue(ScriptArgs &args) override;
    const QStringList &parameterNames(const QString &member) const override;

    void set(const ScriptError &error);
    void clear();
    int number() const { return m_number; }
    const QString &description() const { return m_description; }

    // VBA's errors travel as HRESULTs of the control facility (0x800A....); a number of that
    // form is the error it wraps.
    static std::int32_t mappedNumber(std::int32_t number);

private:
    [[noreturn]] void raise(ScriptArgs &args) const;

    int m_number = 0;
    QString m_description;
    QString m_source;
    QString m_helpFile;
    std::int32_t m_helpContext = 0;
};

} // namespace cadsim
