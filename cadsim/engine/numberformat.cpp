#include "cadsim/engine/numberformat.h"

#include <QRegularExpression>
#include <QStringList>

#include <cmath>

namespace cadsim {

namespace {

// |value| rounded to the given decimals, as plain digits with a "." when decimals > 0.
QString roundedDigits(double value, int decimals)
{
    // The 15 significant digits VBA works with, so that 1.005 is 1.005 and rounds up.
    const QString e = QString::number(std::fabs(value), 'e', 14); // d.dddddddddddddde±xx
    QString digits = e.left(1) + e.mid(2, 14);
    int exponent = e.mid(17).toInt();
    // Position of the decimal point within digits: after exponent + 1 digits.
    int point = exponent + 1;
    if (point < 0) {
        digits.prepend(QString(-point, QLatin1Char('0')));
        point = 0;
    }
    if (digits.size() < point + decimals + 1)
        digits += QString(point + decimals + 1 - digits.size(), QLatin1Char('0'));
    const int keep = point + decimals;
    const bool up = digits.at(keep) >= QLatin1Char('5');
    digits.truncate(keep);
    if (up) {
        int i = keep - 1;
        for (; i >= 0; --i) {
            if (digits.at(i) == QLatin1Char('9')) {
                digits[i] = QLatin1Char('0');
            } else {
                digits[i] = QChar(digits.at(i).unicode() + 1);
                break;
            }
        }
        if (i < 0) {
            digits.prepend(QLatin1Char('1'));
            ++point;
        }
    }
    QString intPart = digits.left(point);
    intPart.remove(QRegularExpression(QStringLiteral("^0+")));
    const QString frac = digits.mid(point);
    return decimals > 0 ? intPart + QLatin1Char('.') + frac : intPart;
}

QString grouped(const QString &intDigits)
{
    QString out;
    const int n = static_cast<int>(intDigits.size());
    for (int i = 0; i < n; ++i) {
        if (i > 0 && (n - i) % 3 == 0)
            out += QLatin1Char(',');
        out += intDigits.at(i);
    }
    return out;
}

bool isPlaceholder(QChar c)
{
    return c == QLatin1Char('0') || c == QLatin1Char('#');
}

} // namespace

QString formatNumberPattern(double value, const QString &patternIn)
{
    const QStringList sections = patternIn.split(QLatin1Char(';'));
    QString pattern = sections.first();
    bool minusSign = value < 0;
    if (value < 0 && sections.size() > 1 && !sections.at(1).isEmpty()) {
        pattern = sections.at(1); // the negative section writes its own sign, if any
        minusSign = false;
    }
    // Literal text around the number; quoted text and backslash escapes stay as written.
    int first = -1, last = -1;
    bool quoted = false;
    for (int i = 0; i < pattern.size(); ++i) {
        const QChar c = pattern.at(i);
        if (c == QLatin1Char('"'))
            quoted = !quoted;
        else if (!quoted && first >= 0 && (c == QLatin1Char('E') || c == QLatin1Char('e')) && i + 1 < pattern.size()
                 && (pattern.at(i + 1) == QLatin1Char('+') || pattern.at(i + 1) == QLatin1Char('-')))
            break;
        else if (!quoted && (isPlaceholder(c) || (c == QLatin1Char('.') && first >= 0) || (c == QLatin1Char(',') && first >= 0))) {
            if (first < 0)
                first = i;
            last = i;
        }
    }
    auto literal = [](const QString &text) {
        QString out;
        for (int i = 0; i < text.size(); ++i) {
            const QChar c = text.at(i);
            if (c == QLatin1Char('"'))
                continue;
            if (c == QLatin1Char('\\') && i + 1 < text.size()) {
                out += text.at(++i);
                continue;
            }
            out += c;
        }
        return out;
    };
    if (first < 0)
        return literal(pattern);
    QString prefix = pattern.left(first);
    QString number = pattern.mid(first, last - first + 1);
    QString suffix = pattern.mid(last + 1);
    double v = std::fabs(value);
    if ((prefix + suffix).contains(QLatin1Char('%')))
        v *= 100;
    // Scientific: "0.00E+00" (the exponent part sits in the suffix).
    QString exponentPart;
    const int ePos = static_cast<int>(suffix.indexOf(QRegularExpression(QStringLiteral("[eE][+-]"))));
    if (ePos == 0) {
        int j = 2;
        while (j < suffix.size() && isPlaceholder(suffix.at(j)))
            ++j;
        exponentPart = suffix.left(j);
        suffix = suffix.mid(j);
    }
    const int dot = static_cast<int>(number.indexOf(QLatin1Char('.')));
    const QString intPattern = dot < 0 ? number : number.left(dot);
    const QString fracPattern = dot < 0 ? QString() : number.mid(dot + 1);
    const bool group = intPattern.contains(QLatin1Char(','));
    const int minInt = static_cast<int>(intPattern.count(QLatin1Char('0')));
    const int fracZeros = static_cast<int>(fracPattern.count(QLatin1Char('0')));
    const int fracAll = fracZeros + static_cast<int>(fracPattern.count(QLatin1Char('#')));
    int exponent = 0;
    if (!exponentPart.isEmpty() && v != 0) {
        exponent = static_cast<int>(std::floor(std::log10(v)));
        const int intDigits = std::max(1, static_cast<int>(intPattern.count(QLatin1Char('0')) + intPattern.count(QLatin1Char('#'))));
        exponent -= intDigits - 1;
        v /= std::pow(10.0, exponent);
        if (roundedDigits(v, fracAll).section(QLatin1Char('.'), 0, 0).size() > intDigits) {
            ++exponent;
            v /= 10;
        }
    }
    const QString rounded = roundedDigits(v, fracAll);
    QString intDigits = rounded.section(QLatin1Char('.'), 0, 0);
    QString frac = rounded.section(QLatin1Char('.'), 1);
    while (frac.size() > fracZeros && frac.endsWith(QLatin1Char('0')))
        frac.chop(1);
    if (intDigits.size() < minInt)
        intDigits.prepend(QString(minInt - intDigits.size(), QLatin1Char('0')));
    QString out = group ? grouped(intDigits) : intDigits;
    if (dot >= 0 && (!frac.isEmpty() || fracZeros > 0 || fracPattern.isEmpty()))
        out += QLatin1Char('.') + frac;
    if (!exponentPart.isEmpty()) {
        const int expZeros = static_cast<int>(exponentPart.count(QLatin1Char('0')));
        QString e = QString::number(std::abs(exponent));
        if (e.size() < expZeros)
            e.prepend(QString(expZeros - e.size(), QLatin1Char('0')));
        const bool plus = exponentPart.at(1) == QLatin1Char('+');
        out += exponentPart.at(0) + QString(exponent < 0 ? QStringLiteral("-") : (plus ? QStringLiteral("+") : QString())) + e;
    }
    const bool zero = !out.contains(QRegularExpression(QStringLiteral("[1-9]")));
    return (minusSign && !zero ? QStringLiteral("-") : QString()) + literal(prefix) + out + literal(suffix);
}

QString formatNumberStyle(double value, NumberStyle style, int decimals, bool leadingDigit, bool parens, bool group)
{
    double v = std::fabs(value);
    if (style == NumberStyle::Percent)
        v *= 100;
    QString rounded = roundedDigits(v, decimals);
    QString intDigits = rounded.section(QLatin1Char('.'), 0, 0);
    const QString frac = rounded.section(QLatin1Char('.'), 1);
    if (intDigits.isEmpty() && leadingDigit)
        intDigits = QStringLiteral("0");
    QString out = (group ? grouped(intDigits) : intDigits) + (decimals > 0 ? QLatin1Char('.') + frac : QString());
    if (style == NumberStyle::Currency)
        out.prepend(QLatin1Char('$'));
    if (style == NumberStyle::Percent)
        out += QLatin1Char('%');
    const bool negative = value < 0 && out.contains(QRegularExpression(QStringLiteral("[1-9]")));
    if (!negative)
        return out;
    return parens ? QLatin1Char('(') + out + QLatin1Char(')') : QLatin1Char('-') + out;
}

QString strOfNumber(const QString &plain)
{
    if (plain.startsWith(QLatin1Char('-')))
        return plain.startsWith(QLatin1String("-0.")) ? QLatin1Char('-') + plain.mid(2) : plain;
    return QLatin1Char(' ') + (plain.startsWith(QLatin1String("0.")) ? plain.mid(1) : plain);
}

} // namespace cadsim
