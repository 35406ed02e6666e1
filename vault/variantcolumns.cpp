#include "vault/variantcolumns.h"

#include "vault/vaultdb.h"

void bindVariant(Statement &s, int first, const Variant &value)
{
    s.bind(first, static_cast<int>(value.type()));
    s.bindNull(first + 1).bindNull(first + 2).bindNull(first + 3);
    switch (value.type()) {
    case VarType::I2:
        s.bind(first + 1, static_cast<int>(value.i2()));
        break;
    case VarType::I4:
        s.bind(first + 1, value.i4());
        break;
    case VarType::UI1:
        s.bind(first + 1, static_cast<int>(value.ui1()));
        break;
    case VarType::Bool:
        s.bind(first + 1, static_cast<int>(value.boolValue()));
        break;
    case VarType::R4:
        s.bind(first + 2, static_cast<double>(value.r4()));
        break;
    case VarType::R8:
        s.bind(first + 2, value.r8());
        break;
    case VarType::Date:
        s.bind(first + 2, value.date());
        break;
    case VarType::BStr:
        s.bind(first + 3, value.bstr());
        break;
    case VarType::Empty:
    case VarType::Other:
        break;
    }
}

Variant readVariant(const Statement &s, int first)
{
    switch (static_cast<VarType>(s.integer(first))) {
    case VarType::I2:
        return Variant::fromI2(static_cast<std::int16_t>(s.int64(first + 1)));
    case VarType::I4:
        return Variant::fromI4(static_cast<std::int32_t>(s.int64(first + 1)));
    case VarType::UI1:
        return Variant::fromUI1(static_cast<std::uint8_t>(s.int64(first + 1)));
    case VarType::Bool:
        return Variant::fromBool(s.int64(first + 1) != 0);
    case VarType::R4:
        return Variant::fromR4(static_cast<float>(s.real(first + 2)));
    case VarType::R8:
        return Variant::fromR8(s.real(first + 2));
    case VarType::Date:
        return Variant::fromDate(s.real(first + 2));
    case VarType::BStr:
        return Variant::fromBStr(s.text(first + 3));
    case VarType::Other:
        return Variant::other();
    case VarType::Empty:
        break;
    }
    return {};
}
