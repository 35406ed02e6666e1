#include "macro/expanddelimited.h"

#include "macro/varianttext.h"

#include <QHash>
#include <limits>

namespace {

QString valueText(const Variant &value)
{
    QString text = VariantToText(value);
    if (value.type() == VarType::BStr)
        text.replace(QStringLiteral("\r\n"), QStringLiteral("\"+vbLf+\""));
    return text;
}

QString tokenName(QStringView token, QChar open, QChar close)
{
    qsizetype first = 0;
    qsizetype last = token.size();
    while (first < last && token[first] == open)
        ++first;
    while (last > first && token[last - 1] == close)
        --last;
    return token.mid(first, last - first).toString();
}

} // namespace

QString ExpandDelimited(const QString &text, QChar open, QChar close, const PlaceholderLookup &lookup)
{
    qsizetype pos = text.indexOf(open);
    if (pos < 0)
        return text;

    QString out;
    out.reserve(text.size() + text.size() / 4);
    QHash<QStringView, QString> values; // token -> value text; views into text
    qsizetype copied = 0;
    while (pos >= 0) {
        const qsizetype end = text.indexOf(close, pos);
        if (end < 0)
            break; // an opener without a partner: leave the rest alone
        const QStringView token = QStringView(text).mid(pos, end - pos + 1);
        auto it = values.constFind(token);
        if (it == values.cend()) {
            const std::optional<Variant> value = lookup(tokenName(token, open, close));
            it = values.insert(token, value ? valueText(*value) : QString());
        }
        out.append(QStringView(text).mid(copied, pos - copied));
        out.append(*it);
        copied = end + 1;
        pos = text.indexOf(open, copied);
    }
    out.append(QStringView(text).mid(copied));
    return out;
}

std::int32_t leadingInteger(const QString &text)
{
    qsizetype i = 0;
    while (i < text.size() && (text[i] == QLatin1Char(' ') || (text[i] >= QLatin1Char('\t') && text[i] <= QLatin1Char('\r'))))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == QLatin1Char('-') || text[i] == QLatin1Char('+'))) {
        negative = text[i] == QLatin1Char('-');
        ++i;
    }
    qint64 value = 0;
    constexpr qint64 limit = qint64(std::numeric_limits<std::int32_t>::max()) + 1;
    for (; i < text.size() && text[i] >= QLatin1Char('0') && text[i] <= QLatin1Char('9'); ++i) {
        value = value * 10 + (text[i].unicode() - u'0');
        if (value > limit)
            value = limit;
    }
    if (negative)
        return static_cast<std::int32_t>(-value);
    return static_cast<std::int32_t>(std::min<qint64>(value, std::numeric_limits<std::int32_t>::max()));
}

std::optional<Variant> lookupTaskValue(const QString &name,
                                       const std::function<std::optional<Variant>(const Variant &)> &byNameOrNumber)
{
    if (name.startsWith(QLatin1Char('#'))) {
        qsizetype i = 0;
        while (i < name.size() && name[i] == QLatin1Char('#'))
            ++i;
        return byNameOrNumber(Variant::fromI4(leadingInteger(name.mid(i))));
    }
    return byNameOrNumber(Variant::fromBStr(name));
}
