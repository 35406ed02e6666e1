#pragma once

#include "cadsim/engine/scriptobject.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace cadsim {

// The value of a user-defined type (Type ... End Type). Fields are read and written as members;
// an array field takes its indexes as arguments. Assignment copies the whole record.
class ScriptRecord final : public ScriptObject {
public:
    // fieldNames lower case, in declaration order; values are the fields' initial values.
    ScriptRecord(QString typeName, std::shared_ptr<const QStringList> fieldNames, std::vector<ScriptValue> values);

    QString typeName() const override { return m_typeName; }
    ScriptValue invoke(const QString &member, CallKind kind, ScriptArgs &args) override;
    // A deep copy: arrays and records inside are copied too.
    std::shared_ptr<ScriptRecord> clone() const;

private:
    ScriptValue &field(const QString &member);

    QString m_typeName;
    std::shared_ptr<const QStringList> m_names; // shared by every copy
    std::vector<ScriptValue> m_values;
};

} // namespace cadsim
