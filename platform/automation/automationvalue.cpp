#include "platform/automation/automationvalue.h"

#include "host/hosterror.h"

#include <QJsonArray>
#include <QJsonObject>

namespace {

// Type numbers on the wire: the automation ones, plus the object and array kinds.
constexpr int kVtDispatch = 9;
constexpr int kVtVariantArray = 0x200C;

const QString kType = QStringLiteral("vt");
const QString kValue = QStringLiteral("v");

void requireScalar(const AutomationValue &value)
{
    if (value.kind() != AutomationValue::Kind::Scalar)
        throw HostError(DISP_E_TYPEMISMATCH, QStringLiteral("object or array used as a scalar"));
}

} // namespace

AutomationValue::AutomationValue(Variant v) : m_scalar(std::move(v)) {}

AutomationValue AutomationValue::fromHandle(ObjectHandle handle)
{
    AutomationValue value;
    value.m_kind = Kind::Object;
    value.m_handle = handle;
    return value;
}

AutomationValue AutomationValue::fromObject(std::shared_ptr<AutomationObject> object)
{
    AutomationValue value;
    value.m_kind = Kind::Object;
    value.m_object = std::move(object);
    return value;
}

AutomationValue AutomationValue::fromArray(std::vector<AutomationValue> items)
{
    AutomationValue value;
    value.m_kind = Kind::Array;
    value.m_items = std::move(items);
    return value;
}

std::int32_t AutomationValue::toI4() const
{
    requireScalar(*this);
    return m_scalar.toI4();
}

bool AutomationValue::toBool() const
{
    requireScalar(*this);
    return m_scalar.toBool();
}

double AutomationValue::toR8() const
{
    requireScalar(*this);
    return m_scalar.toR8();
}

QString AutomationValue::toText() const
{
    requireScalar(*this);
    return m_scalar.toText();
}

QJsonValue AutomationValue::toJson(const HandleResolver &resolve) const
{
    QJsonObject json;
    switch (m_kind) {
    case Kind::Object: {
        ObjectHandle handle = m_handle;
        if (m_object)
            handle = resolve ? resolve(m_object) : 0;
        json[kType] = kVtDispatch;
        json[kValue] = static_cast<qint64>(handle);
        return json;
    }
    case Kind::Array: {
        QJsonArray items;
        for (const AutomationValue &item : m_items)
            items.append(item.toJson(resolve));
        json[kType] = kVtVariantArray;
        json[kValue] = items;
        return json;
    }
    case Kind::Scalar:
        break;
    }
    json[kType] = static_cast<int>(m_scalar.type());
    switch (m_scalar.type()) {
    case VarType::Empty:
    case VarType::Other:
        break;
    case VarType::I2:
        json[kValue] = m_scalar.i2();
        break;
    case VarType::I4:
        json[kValue] = m_scalar.i4();
        break;
    case VarType::UI1:
        json[kValue] = m_scalar.ui1();
        break;
    case VarType::R4:
        json[kValue] = static_cast<double>(m_scalar.r4());
        break;
    case VarType::R8:
        json[kValue] = m_scalar.r8();
        break;
    case VarType::Date:
        json[kValue] = m_scalar.date();
        break;
    case VarType::BStr:
        json[kValue] = m_scalar.bstr();
        break;
    case VarType::Bool:
        json[kValue] = m_scalar.boolValue() != 0;
        break;
    }
    return json;
}

bool AutomationValue::fromJson(const QJsonValue &json, AutomationValue &out)
{
    if (!json.isObject())
        return false;
    const QJsonObject object = json.toObject();
    const QJsonValue typeValue = object.value(kType);
    if (!typeValue.isDouble())
        return false;
    const int type = typeValue.toInt(-1);
    const QJsonValue v = object.value(kValue);
    const auto needNumber = [&v] { return v.isDouble(); };

    switch (type) {
    case kVtDispatch:
        if (!needNumber())
            return false;
        out = fromHandle(static_cast<ObjectHandle>(v.toInteger()));
        return true;
    case kVtVariantArray: {
        if (!v.isArray())
            return false;
        std::vector<AutomationValue> items;
        for (const QJsonValue &item : v.toArray()) {
            AutomationValue element;
            if (!fromJson(item, element))
                return false;
            items.push_back(std::move(element));
        }
        out = fromArray(std::move(items));
        return true;
    }
    case static_cast<int>(VarType::Empty):
        out = AutomationValue();
        return true;
    case static_cast<int>(VarType::I2):
        if (!needNumber())
            return false;
        out = Variant::fromI2(static_cast<std::int16_t>(v.toInt()));
        return true;
    case static_cast<int>(VarType::I4):
        if (!needNumber())
            return false;
        out = Variant::fromI4(static_cast<std::int32_t>(v.toInteger()));
        return true;
    case static_cast<int>(VarType::UI1):
        if (!needNumber())
            return false;
        out = Variant::fromUI1(static_cast<std::uint8_t>(v.toInt()));
        return true;
    case static_cast<int>(VarType::R4):
        if (!needNumber())
            return false;
        out = Variant::fromR4(static_cast<float>(v.toDouble()));
        return true;
    case static_cast<int>(VarType::R8):
        if (!needNumber())
            return false;
        out = Variant::fromR8(v.toDouble());
        return true;
    case static_cast<int>(VarType::Date):
        if (!needNumber())
            return false;
        out = Variant::fromDate(v.toDouble());
        return true;
    case static_cast<int>(VarType::BStr):
        if (!v.isString())
            return false;
        out = Variant::fromBStr(v.toString());
        return true;
    case static_cast<int>(VarType::Bool):
        if (!v.isBool())
            return false;
        out = Variant::fromBool(v.toBool());
        return true;
    default:
        return false;
    }
}

bool AutomationValue::operator==(const AutomationValue &other) const
{
    if (m_kind != other.m_kind)
        return false;
    switch (m_kind) {
    case Kind::Scalar:
        return m_scalar == other.m_scalar;
    case Kind::Object:
        return m_object ? m_object == other.m_object : (!other.m_object && m_handle == other.m_handle);
    case Kind::Array:
        return m_items == other.m_items;
    }
    return false;
}
