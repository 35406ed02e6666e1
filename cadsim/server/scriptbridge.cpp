#include "cadsim/server/scriptbridge.h"

#include "cadsim/model/modeldoc.h"
#include "platform/automation/automationerrors.h"

#include <algorithm>

using cadsim::ScriptValue;
using cadsim::ValueType;

namespace {

constexpr HRESULT DISP_E_EXCEPTION = makeHresult(0x80020009u);

// A script object served to automation callers through its member table.
class ScriptedObject final : public AutomationObject
{
public:
    ScriptedObject(ScriptBridge &bridge, std::shared_ptr<cadsim::TableObject> object, bool sourcesEvents)
        : m_bridge(bridge), m_object(std::move(object)), m_sourcesEvents(sourcesEvents)
    {
    }
    HRESULT invoke(const QString &member, AutomationCall &call) override
    {
        return m_bridge.invoke(*m_object, member, call);
    }
    bool sourcesEvents() const override { return m_sourcesEvents; }

private:
    ScriptBridge &m_bridge;
    std::shared_ptr<cadsim::TableObject> m_object;
    bool m_sourcesEvents;
};

HRESULT resultOf(const cadsim::ScriptError &error)
{
    switch (error.number()) {
    case cadsim::ErrNo::NoSuchMember: return DISP_E_MEMBERNOTFOUND;
    case cadsim::ErrNo::ArgumentNotOptional: return DISP_E_BADPARAMCOUNT;
    case cadsim::ErrNo::TypeMismatch: return DISP_E_TYPEMISMATCH;
    case cadsim::ErrNo::Overflow: return DISP_E_OVERFLOW;
    default: return DISP_E_EXCEPTION;
    }
}

// Whether a member left an argument as it was.
bool unchanged(const ScriptValue &before, const ScriptValue &after)
{
    if (before.type() != after.type())
        return false;
    switch (before.type()) {
    case ValueType::Empty:
    case ValueType::Null: return true;
    case ValueType::Error: return before.errorCode() == after.errorCode();
    case ValueType::Object:
    case ValueType::Record: return before.object() == after.object();
    case ValueType::Array: return before.array() == after.array();
    default: return before.toString() == after.toString();
    }
}

} // namespace

std::shared_ptr<AutomationObject> ScriptBridge::forObject(const std::shared_ptr<cadsim::ScriptObject> &object)
{
    auto table = std::dynamic_pointer_cast<cadsim::TableObject>(object);
    if (!table)
        return nullptr;
    const std::lock_guard lock(m_mutex);
    auto &slot = m_objects[object.get()];
    if (!slot.second) {
        const bool events = std::dynamic_pointer_cast<cadsim::ScriptDocument>(object)
                            || std::dynamic_pointer_cast<cadsim::ScriptView>(object);
        slot = {object, std::make_shared<ScriptedObject>(*this, std::move(table), events)};
    }
    return slot.second;
}

void ScriptBridge::adopt(const std::shared_ptr<cadsim::ScriptObject> &object, std::shared_ptr<AutomationObject> automation)
{
    const std::lock_guard lock(m_mutex);
    m_objects[object.get()] = {object, std::move(automation)};
}

std::shared_ptr<cadsim::ScriptDocument> ScriptBridge::scriptDocument(const ModelDoc &doc)
{
    if (auto existing = m_app->existing(doc))
        return existing;
    const auto &documents = m_app->application().documents();
    const auto held = std::find_if(documents.begin(), documents.end(),
                                   [&doc](const ModelDocPtr &d) { return d.get() == &doc; });
    return held == documents.end() ? nullptr : m_app->wrap(*held);
}

std::shared_ptr<AutomationObject> ScriptBridge::forDocument(const ModelDoc &doc)
{
    const auto script = scriptDocument(doc);
    return script ? forObject(script) : nullptr;
}

std::shared_ptr<AutomationObject> ScriptBridge::forView(const ModelDoc &doc, const ModelView &view)
{
    const auto script = scriptDocument(doc);
    const auto &views = doc.views();
    for (std::size_t i = 0; script && i < views.size(); ++i) {
        if (views[i].get() == &view)
            return forObject(script->view(i));
    }
    return nullptr;
}

HRESULT ScriptBridge::invoke(cadsim::TableObject &object, const QString &member, AutomationCall &call)
{
    const cadsim::MemberTable::Member *entry = object.members().find(member);
    if (!entry)
        return DISP_E_MEMBERNOTFOUND;
    std::vector<ScriptValue> values;
    for (const AutomationValue &arg : call.args())
        values.push_back(toScript(arg));
    const std::vector<ScriptValue> before = values;
    cadsim::ScriptArgs args;
    for (ScriptValue &value : values)
        args.push_back(&value);
    // Whether a property is written is told by the argument count.
    const cadsim::CallKind kind = entry->writable && !args.empty() ? cadsim::CallKind::Let : cadsim::CallKind::Get;
    try {
        const ScriptValue result = entry->handler(kind, args);
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (!unchanged(before[i], values[i]))
                call.args()[i] = toAutomation(values[i]);
        }
        if (kind != cadsim::CallKind::Let)
            call.setResult(toAutomation(result));
    } catch (const cadsim::ScriptError &error) {
        return resultOf(error);
    }
    return S_OK;
}

AutomationValue ScriptBridge::toAutomation(const ScriptValue &value)
{
    switch (value.type()) {
    case ValueType::Integer: return Variant::fromI2(value.toInteger());
    case ValueType::Long: return Variant::fromI4(value.toLong());
    case ValueType::Double: return Variant::fromR8(value.toDouble());
    case ValueType::Date: return Variant::fromDate(value.toDouble());
    case ValueType::String: return Variant::fromBStr(value.toString());
    case ValueType::Boolean: return Variant::fromBool(value.toBool());
    case ValueType::Object: {
        auto object = value.object() ? forObject(value.object()) : nullptr;
        return object ? AutomationValue::fromObject(std::move(object)) : AutomationValue::nothing();
    }
    case ValueType::Array: {
        std::vector<AutomationValue> items;
        for (const ScriptValue &item : value.array()->items)
            items.push_back(toAutomation(item));
        return AutomationValue::fromArray(std::move(items));
    }
    default: return {}; // Empty, Null, Error and records have no automation form here
    }
}

ScriptValue ScriptBridge::toScript(const AutomationValue &value)
{
    if (value.isObject())
        return ScriptValue::nothing();
    if (value.isArray()) {
        std::vector<ScriptValue> items;
        for (const AutomationValue &item : value.items())
            items.push_back(toScript(item));
        return ScriptValue::fromList(items);
    }
    const Variant &v = value.scalar();
    switch (v.type()) {
    case VarType::I2: return ScriptValue::fromInteger(v.i2());
    case VarType::I4: return ScriptValue::fromLong(v.i4());
    case VarType::R4: return ScriptValue::fromDouble(v.r4());
    case VarType::R8: return ScriptValue::fromDouble(v.r8());
    case VarType::Date: return ScriptValue::fromDate(v.date());
    case VarType::BStr: return ScriptValue::fromString(v.bstr());
    case VarType::Bool: return ScriptValue::fromBool(v.boolValue() != 0);
    case VarType::UI1: return ScriptValue::fromInteger(v.ui1());
    default: return {};
    }
}
