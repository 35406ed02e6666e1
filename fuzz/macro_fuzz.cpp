#include "macro/expanddelimited.h"
#include "macro/macroliteral.h"

#include <QString>
#include <cstdint>
#include <cstdlib>

namespace {

// What the macro engine reads back from "<encoded>": literals and ChrW
// calls joined by " & ", lines continued with "_" CR LF. Empty on a syntax
// error.
bool readBack(const QString &encoded, QString &value)
{
    const QString source = QLatin1Char('"') + encoded + QLatin1Char('"');
    qsizetype i = 0;
    bool join = false;
    while (i < source.size()) {
        if (join) {
            if (source.mid(i, 3) != QLatin1String(" & "))
                return false;
            i += 3;
            if (source.mid(i, 3) == QLatin1String("_\r\n"))
                i += 3;
            join = false;
            continue;
        }
        if (source[i] == QLatin1Char('"')) {
            const qsizetype close = source.indexOf(QLatin1Char('"'), i + 1);
            if (close < 0)
                return false;
            value += source.mid(i + 1, close - i - 1);
            i = close + 1;
        } else if (source.mid(i, 5) == QLatin1String("ChrW(")) {
            const qsizetype close = source.indexOf(QLatin1Char(')'), i);
            if (close < 0)
                return false;
            value += QChar(static_cast<char16_t>(source.mid(i + 5, close - i - 5).toInt()));
            i = close + 1;
        } else {
            return false;
        }
        join = true;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf16(reinterpret_cast<const char16_t *>(data),
                                            static_cast<qsizetype>(size / 2));

    // Values may hold delimiters and line breaks; the pass must end and never
    // expand an inserted value again.
    const PlaceholderLookup lookup = [](const QString &name) -> std::optional<Variant> {
        if (name.isEmpty())
            return std::nullopt;
        return Variant::fromBStr(name + QStringLiteral("[x]\r\n"));
    };
    const QString expanded = ExpandDelimited(text, QLatin1Char('['), QLatin1Char(']'), lookup);
    if (!text.contains(QLatin1Char('[')) && expanded != text)
        std::abort();

    // Every value without a quote reads back as itself, in 8-bit text.
    if (!text.contains(QLatin1Char('"'))) {
        const QString encoded = EncodeMacroLiteral(text);
        for (const QChar c : encoded)
            if (c.unicode() > 255)
                std::abort();
        QString value;
        if (!readBack(encoded, value) || value != text)
            std::abort();
    }
    return 0;
}
