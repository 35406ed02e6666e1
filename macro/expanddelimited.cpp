#include "macro/expanddelimited.h"

#include "base/leadinginteger.h"

#include "macro/varianttext.h"

#include <QHash>

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
