#pragma once

#include "host/variant.h"

#include <QJsonValue>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class AutomationObject;

// Objects cross the wire as handles: integers naming an object that lives in
// the server. 0 is the null reference (Nothing).
using ObjectHandle = std::int64_t;

// One argument or result of an automation call: a scalar VARIANT, an object
// reference or an array of values.
class AutomationValue final
{
public:
    enum class Kind { Scalar, Object, Array };

    AutomationValue() = default; // Empty
    AutomationValue(Variant v); // NOLINT: scalars convert implicitly, as VARIANTs do
    static AutomationValue fromHandle(ObjectHandle handle);
    // Server side: an object that becomes a handle when the value is sent.
    static AutomationValue fromObject(std::shared_ptr<AutomationObject> object);
    static AutomationValue nothing() { return fromHandle(0); }
    static AutomationValue fromArray(std::vector<AutomationValue> items);

    Kind kind() const { return m_kind; }
    bool isEmpty() const { return m_kind == Kind::Scalar && m_scalar.isEmpty(); }
    bool isObject() const { return m_kind == Kind::Object; }
    bool isNothing() const { return m_kind == Kind::Object && !m_object && m_handle == 0; }
    bool isArray() const { return m_kind == Kind::Array; }

    const Variant &scalar() const { return m_scalar; }
    ObjectHandle handle() const { return m_handle; }
    const std::shared_ptr<AutomationObject> &object() const { return m_object; }
    const std::vector<AutomationValue> &items() const { return m_items; }

    // Scalar conversions with the automation type-change rules; they throw
    // HostError (DISP_E_TYPEMISMATCH) for objects and arrays.
    std::int32_t toI4() const;
    bool toBool() const;
    double toR8() const;
    QString toText() const;

    // Wire form. resolve turns server-side objects into handles; without it an
    // unresolved object goes out as Nothing.
    using HandleResolver = std::function<ObjectHandle(const std::shared_ptr<AutomationObject> &)>;
    QJsonValue toJson(const HandleResolver &resolve = {}) const;
    // Reads the wire form; false for anything malformed.
    static bool fromJson(const QJsonValue &json, AutomationValue &out);

    bool operator==(const AutomationValue &other) const;

private:
    Kind m_kind = Kind::Scalar;
    Variant m_scalar;
    ObjectHandle m_handle = 0;
    std::shared_ptr<AutomationObject> m_object;
    std::vector<AutomationValue> m_items;
};

using AutomationArgs = std::vector<AutomationValue>;
