#include "settings/tasksettings.h"

#include "host/hosterror.h"

namespace {

// Reads one variable and changes it to the wanted type. S_FALSE leaves
// converted untouched.
HRESULT readAs(IDoxVariables &holder, const QString &name, VarType type, Variant &converted)
{
    Variant stored;
    const HRESULT hr = holder.GetVariable(name, stored);
    if (hr != S_OK)
        return hr;
    return stored.changeType(type, converted);
}

} // namespace

HRESULT readBoolVariable(IDoxVariables &holder, const QString &name, bool defaultValue, bool &value)
{
    Variant v;
    const HRESULT hr = readAs(holder, name, VarType::Bool, v);
    if (hr == S_OK)
        value = v.boolValue() != 0;
    else if (hr == S_FALSE)
        value = defaultValue;
    return hr;
}

HRESULT readIntVariable(IDoxVariables &holder, const QString &name, std::int32_t defaultValue, std::int32_t &value)
{
    Variant v;
    const HRESULT hr = readAs(holder, name, VarType::I4, v);
    if (hr == S_OK)
        value = v.i4();
    else if (hr == S_FALSE)
        value = defaultValue;
    return hr;
}

HRESULT readTextVariable(IDoxVariables &holder, const QString &name, const QString &defaultValue, QString &value)
{
    Variant v;
    const HRESULT hr = readAs(holder, name, VarType::BStr, v);
    if (hr == S_OK)
        value = v.bstr();
    else if (hr == S_FALSE)
        value = defaultValue;
    return hr;
}

HRESULT readRealVariable(IDoxVariables &holder, const QString &name, float defaultValue, float &value)
{
    Variant v;
    const HRESULT hr = readAs(holder, name, VarType::R4, v);
    if (hr == S_OK)
        value = v.r4();
    else if (hr == S_FALSE)
        value = defaultValue;
    return hr;
}

HRESULT writeBoolVariable(IDoxVariables &holder, const QString &name, bool value)
{
    return holder.SetVariable(name, Variant::fromBool(value));
}

HRESULT writeIntVariable(IDoxVariables &holder, const QString &name, std::int32_t value)
{
    return holder.SetVariable(name, Variant::fromI4(value));
}

HRESULT writeTextVariable(IDoxVariables &holder, const QString &name, const QString &value)
{
    return holder.SetVariable(name, Variant::fromBStr(value));
}

HRESULT writeRealVariable(IDoxVariables &holder, const QString &name, float value)
{
    return holder.SetVariable(name, Variant::fromR4(value));
}

bool getBoolVariable(IDoxVariables &holder, const QString &name, bool defaultValue)
{
    bool value = defaultValue;
    throwIfFailed(readBoolVariable(holder, name, defaultValue, value), name);
    return value;
}

std::int32_t getIntVariable(IDoxVariables &holder, const QString &name, std::int32_t defaultValue)
{
    std::int32_t value = defaultValue;
    throwIfFailed(readIntVariable(holder, name, defaultValue, value), name);
    return value;
}

QString getTextVariable(IDoxVariables &holder, const QString &name, const QString &defaultValue)
{
    QString value = defaultValue;
    throwIfFailed(readTextVariable(holder, name, defaultValue, value), name);
    return value;
}

HRESULT readHolderVariable(const HostObjectPtr &holder, const QString &name, Variant &value, bool &found)
{
    found = false;
    std::shared_ptr<IDoxVariables> variables = queryInterface<IDoxTaskProperties>(holder);
    if (!variables)
        variables = queryInterface<IDoxTaskInstance>(holder);
    if (!variables)
        return E_NOINTERFACE;
    const HRESULT hr = variables->GetVariable(name, value);
    found = hr == S_OK;
    return hr;
}

VariableLoader &VariableLoader::boolean(const QString &name, bool &field)
{
    if (succeeded(m_result))
        m_result = readBoolVariable(m_holder, name, field, field);
    return *this;
}

VariableLoader &VariableLoader::integer(const QString &name, std::int32_t &field)
{
    if (succeeded(m_result))
        m_result = readIntVariable(m_holder, name, field, field);
    return *this;
}

VariableLoader &VariableLoader::text(const QString &name, QString &field)
{
    if (succeeded(m_result))
        m_result = readTextVariable(m_holder, name, field, field);
    return *this;
}

VariableLoader &VariableLoader::real(const QString &name, float &field)
{
    if (succeeded(m_result))
        m_result = readRealVariable(m_holder, name, field, field);
    return *this;
}

VariableSaver &VariableSaver::write(const QString &name, const Variant &value)
{
    if (succeeded(m_result))
        m_result = m_holder.SetVariable(name, value);
    return *this;
}

VariableSaver &VariableSaver::boolean(const QString &name, bool value) { return write(name, Variant::fromBool(value)); }
VariableSaver &VariableSaver::integer(const QString &name, std::int32_t value) { return write(name, Variant::fromI4(value)); }
VariableSaver &VariableSaver::text(const QString &name, const QString &value) { return write(name, Variant::fromBStr(value)); }
VariableSaver &VariableSaver::real(const QString &name, float value) { return write(name, Variant::fromR4(value)); }
