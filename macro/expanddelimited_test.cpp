#include "macro/expanddelimited.h"

#include "host/hosterror.h"
#include "macro/varianttext.h"

#include <QHash>
#include <QRandomGenerator>
#include <gtest/gtest.h>

namespace {

// A lookup over a name-to-value map that counts its calls per name.
struct MapLookup {
    QHash<QString, Variant> values;
    QHash<QString, int> calls;

    PlaceholderLookup fn()
    {
        return [this](const QString &name) -> std::optional<Variant> {
            ++calls[name];
            const auto it = values.constFind(name);
            if (it == values.cend())
                return std::nullopt;
            return *it;
        };
    }
};

QString expandBrackets(const QString &text, MapLookup &map)
{
    return ExpandDelimited(text, QLatin1Char('['), QLatin1Char(']'), map.fn());
}

TEST(VariantToText, EachTypeAsTheMacroNeedsIt)
{
    const QLocale c = QLocale::c();
    EXPECT_EQ(VariantToText(Variant::fromBool(false), c), "False");
    EXPECT_EQ(VariantToText(Variant::fromI4(-2147483647 - 1), c), "-2147483648");
    EXPECT_EQ(VariantToText(Variant::fromI2(-7), c), "-7");
    EXPECT_EQ(VariantToText(Variant::fromUI1(255), c), "255");
    EXPECT_EQ(VariantToText(Variant::fromR4(1.25f), c), "1.250000");
    EXPECT_EQ(VariantToText(Variant::fromR8(-1234567.0000004), c), "-1234567.000000");
    EXPECT_EQ(VariantToText(Variant(), c), "");
    EXPECT_EQ(VariantToText(Variant::other(), c), "");
    // Reals keep the point whatever the locale.
    EXPECT_EQ(VariantToText(Variant::fromR8(2.5), QLocale(QLocale::German, QLocale::Germany)), "2.500000");
}

TEST(VariantToText, DatesShowOnlyThePartsTheyHave)
{
    const QLocale us(QLocale::English, QLocale::UnitedStates);
    // 2000-01-01 is day 36526; 0.75 is 18:00.
    const QString dateOnly = VariantToText(Variant::fromDate(36526.0), us);
    EXPECT_TRUE(dateOnly.contains("2000") || dateOnly.contains("00")) << dateOnly.toStdString();
    EXPECT_FALSE(dateOnly.contains(':')) << dateOnly.toStdString();
    const QString timeOnly = VariantToText(Variant::fromDate(0.75), us);
    EXPECT_TRUE(timeOnly.contains("6:00")) << timeOnly.toStdString();
    EXPECT_FALSE(timeOnly.contains("1899")) << timeOnly.toStdString();
    const QString both = VariantToText(Variant::fromDate(36526.75), us);
    EXPECT_TRUE(both.contains(':')) << both.toStdString();
    EXPECT_NE(both, timeOnly);
}

TEST(ExpandDelimited, LineBreaksOfStringsReopenTheLiteral)
{
    MapLookup map;
    map.values = {{"X", Variant::fromBStr("a\r\nb")}, {"Lf", Variant::fromBStr("a\nb\r")}};
    EXPECT_EQ(expandBrackets("s = \"[X]\"", map), "s = \"a\"+vbLf+\"b\"");
    // Only CR LF pairs are literal breaks; a lone LF or CR stays.
    EXPECT_EQ(expandBrackets("[Lf]", map), "a\nb\r");
}

TEST(ExpandDelimited, OneLookupPerTokenAndEveryOccurrenceReplaced)
{
    MapLookup map;
    map.values = {{"A", Variant::fromI4(7)}};
    EXPECT_EQ(expandBrackets("[A]+[A]-[A]", map), "7+7-7");
    EXPECT_EQ(map.calls.value("A"), 1);
}

TEST(ExpandDelimited, InsertedValuesAreNotExpandedAgainInTheSamePass)
{
    MapLookup map;
    map.values = {{"A", Variant::fromBStr("[Other]")}, {"Other", Variant::fromBStr("no")}};
    EXPECT_EQ(expandBrackets("x [A] y", map), "x [Other] y");
    EXPECT_EQ(map.calls.value("Other"), 0);
    // A value that is the same token as its own placeholder does not loop.
    MapLookup self;
    self.values = {{"S", Variant::fromBStr("[S]")}};
    EXPECT_EQ(expandBrackets("[S][S]", self), "[S][S]");
    EXPECT_EQ(self.calls.value("S"), 1);
}

TEST(ExpandDelimited, NamesLoseOnlyTheirDelimiters)
{
    MapLookup map;
    map.values = {{"A", Variant::fromBStr("v")}, {" B ", Variant::fromBStr("w")}};
    // The token ends at the first closer; "[[A]" names A and the second "]" stays.
    EXPECT_EQ(expandBrackets("[[A]]", map), "v]");
    EXPECT_EQ(expandBrackets("[ B ]|[B]", map), "w|");
    EXPECT_EQ(map.calls.value("B"), 1);
    EXPECT_EQ(expandBrackets("[]", map), "");
    EXPECT_EQ(map.calls.value(""), 1);
}

TEST(ExpandDelimited, AnOpenerWithoutCloserEndsThePass)
{
    MapLookup map;
    map.values = {{"A", Variant::fromI4(1)}, {"B", Variant::fromI4(2)}};
    EXPECT_EQ(expandBrackets("[A] and [B", map), "1 and [B");
    EXPECT_EQ(expandBrackets("[", map), "[");
    EXPECT_EQ(expandBrackets("x ] [A] ]", map), "x ] 1 ]");
    EXPECT_EQ(expandBrackets("If a <> b Then ] x", map), "If a <> b Then ] x");
    EXPECT_EQ(map.calls.value("B"), 0);
}

TEST(ExpandDelimited, LookupFailureEndsTheExpansion)
{
    const PlaceholderLookup failing = [](const QString &) -> std::optional<Variant> {
        throw HostError(E_DOX_DATABASE_ACCESS);
    };
    try {
        ExpandDelimited("a [X] b", QLatin1Char('['), QLatin1Char(']'), failing);
        FAIL() << "no error raised";
    } catch (const HostError &e) {
        EXPECT_EQ(e.code(), E_DOX_DATABASE_ACCESS);
    }
}

TEST(TaskValueLookup, HashNamesAreNumbers)
{
    QList<Variant> keys;
    const auto byKey = [&](const Variant &key) -> std::optional<Variant> {
        keys.append(key);
        return Variant::fromBStr("v");
    };
    for (const char *name : {"#12", "##12", "# 12", "#12abc", "#x", "#", "#-3", "Name", " #1"})
        lookupTaskValue(QString::fromLatin1(name), byKey);
    const QList<Variant> expected = {Variant::fromI4(12), Variant::fromI4(12), Variant::fromI4(12),
                                     Variant::fromI4(12), Variant::fromI4(0), Variant::fromI4(0),
                                     Variant::fromI4(-3), Variant::fromBStr("Name"), Variant::fromBStr(" #1")};
    ASSERT_EQ(keys.size(), expected.size());
    for (qsizetype i = 0; i < keys.size(); ++i)
        EXPECT_EQ(keys[i], expected[i]) << "query " << i << ": " << describeVariant(keys[i]).toStdString();
}

// The pass done the plain way: look the token up, replace it all over the
// whole text, carry on behind the inserted value. Valid as a reference for
// texts where no token holds a second opener and no value holds a delimiter.
QString referenceExpand(QString text, const QHash<QString, QString> &values)
{
    qsizetype pos = text.indexOf('[');
    while (pos >= 0) {
        const qsizetype end = text.indexOf(']', pos);
        if (end < 0)
            break;
        const QString token = text.mid(pos, end - pos + 1);
        QString name = token;
        while (name.startsWith('['))
            name.remove(0, 1);
        while (name.endsWith(']'))
            name.chop(1);
        const QString value = values.value(name);
        text.replace(token, value);
        pos = text.indexOf('[', pos + value.size());
    }
    return text;
}

TEST(ExpandDelimited, AgreesWithThePlainPassOnOrdinaryTexts)
{
    QRandomGenerator rng(20121105);
    const QHash<QString, QString> strings = {{"A", "alpha"}, {"B", ""}, {"AB", "x y"}, {"C", "long value text"}};
    MapLookup map;
    for (auto it = strings.cbegin(); it != strings.cend(); ++it)
        map.values.insert(it.key(), Variant::fromBStr(it.value()));
    const QStringList pieces = {"[A]", "[B]", "[AB]", "[C]", "[D]", "a", " ", "]", "<Path>", "\r\n", "x]y"};
    for (int round = 0; round < 500; ++round) {
        QString text;
        const int count = rng.bounded(1, 20);
        for (int i = 0; i < count; ++i)
            text += pieces[rng.bounded(static_cast<int>(pieces.size()))];
        if (rng.bounded(4) == 0)
            text += "[A"; // sometimes an unclosed opener at the end
        ASSERT_EQ(expandBrackets(text, map), referenceExpand(text, strings)) << text.toStdString();
    }
}

} // namespace
