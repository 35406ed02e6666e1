#include "script/mecadraversions.h"

#include "base/leadinginteger.h"

#include <algorithm>

namespace {

// The text before the first blank, and the rest after it, trimmed.
std::pair<QString, QString> splitFirstWord(const QString &text)
{
    const qsizetype blank = text.indexOf(QLatin1Char(' '));
    if (blank < 0)
        return {text, QString()};
    return {text.left(blank), text.mid(blank + 1).trimmed()};
}

} // namespace

MecadraRelease mecadraRelease(const QString &productName)
{
    const auto [product, rest] = splitFirstWord(productName);
    if (product.compare(QLatin1String("Mecadra"), Qt::CaseInsensitive) != 0)
        return {};
    auto [yearText, remainder] = splitFirstWord(rest);
    if (remainder.startsWith(QLatin1String("x64"), Qt::CaseInsensitive))
        remainder = splitFirstWord(remainder.mid(3).trimmed()).second; // "x64 Edition ..."
    static const char *const releases[] = {"SP", "Alpha", "Beta", "Pre"};
    const bool release = std::any_of(std::begin(releases), std::end(releases), [&](const char *word) {
        return remainder.startsWith(QLatin1String(word), Qt::CaseSensitive);
    });
    if (!release)
        return {};
    // The year is the number the word begins with ("2013a" is 2013).
    const int year = leadingInteger(yearText);
    if (year < 2008)
        return {};
    return {yearText, year};
}

std::vector<VersionChoice> mecadraVersionChoices(const std::vector<InstalledProducts::Product> &products,
                                                 const QString &useDefaultText)
{
    std::vector<VersionChoice> choices;
    for (const InstalledProducts::Product &product : products) {
        if (product.name.isEmpty())
            continue;
        const MecadraRelease release = mecadraRelease(product.name.left(260));
        if (release.year == 0)
            continue;
        const QString text = QStringLiteral("Mecadra ") + release.yearText;
        if (std::none_of(choices.begin(), choices.end(), [&](const VersionChoice &c) { return c.text == text; }))
            choices.push_back({text, release.year});
    }
    choices.push_back({useDefaultText, 0});
    std::stable_sort(choices.begin(), choices.end(), [](const VersionChoice &a, const VersionChoice &b) {
        return a.text.compare(b.text, Qt::CaseInsensitive) < 0;
    });
    return choices;
}

std::size_t versionChoiceIndex(const std::vector<VersionChoice> &choices, int version)
{
    for (std::size_t i = 0; i < choices.size(); ++i)
        if (version != 0 && choices[i].year == version)
            return i;
    return 0;
}
