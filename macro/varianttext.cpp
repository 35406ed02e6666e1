#include "macro/varianttext.h"

#include "macro/dateformat.h"

QString VariantToText(const Variant &value, const QLocale &locale)
{
    switch (value.type()) {
    case VarType::I2:
        return QString::number(value.i2());
    case VarType::I4:
        return QString::number(value.i4());
    case VarType::UI1:
        return QString::number(value.ui1());
    case VarType::R4:
        // The value is widened first, as printf does with a float argument.
        return QString::asprintf("%f", static_cast<double>(value.r4()));
    case VarType::R8:
        return QString::asprintf("%f", value.r8());
    case VarType::Date: {
        // Like the automation conversion: a value without a time of day shows
        // the date only, one on the zero day shows the time only.
        const AutomationDateFields f = splitAutomationDate(value.date());
        if (!f.valid)
            return {};
        const QDateTime dt(QDate(f.year, f.month, f.day), QTime(f.hour, f.minute, f.second));
        if (f.hour == 0 && f.minute == 0 && f.second == 0)
            return locale.toString(dt.date(), QLocale::ShortFormat);
        if (f.year == 1899 && f.month == 12 && f.day == 30)
            return locale.toString(dt.time(), QLocale::ShortFormat);
        return locale.toString(dt, QLocale::ShortFormat);
    }
    case VarType::BStr:
        return value.bstr();
    case VarType::Bool:
        return value.boolValue() != 0 ? QStringLiteral("True") : QStringLiteral("False");
    case VarType::Empty:
    case VarType::Other:
        break;
    }
    return {};
}
