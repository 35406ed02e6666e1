#include "macro/macroliteral.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <gtest/gtest.h>

namespace {

const QChar kZhe(0x0416); // 1046
const QString kBreak = QStringLiteral("_\r\n");

// Reads back what the macro engine would make of "<placeholder>" after the
// value was put in: a chain of quoted literals and ChrW calls joined by " & ",
// possibly continued on the next line.
QString evaluateLiteral(const QString &encoded)
{
    const QString source = QLatin1Char('"') + encoded + QLatin1Char('"');
    QString value;
    qsizetype i = 0;
    bool expectJoin = false;
    while (i < source.size()) {
        if (expectJoin) {
            if (source.mid(i, 3) != QLatin1String(" & "))
                throw std::runtime_error("missing join at " + std::to_string(i));
            i += 3;
            if (source.mid(i, 3) == kBreak)
                i += 3;
            expectJoin = false;
            continue;
        }
        if (source[i] == QLatin1Char('"')) {
            const qsizetype close = source.indexOf(QLatin1Char('"'), i + 1);
            if (close < 0)
                throw std::runtime_error("unterminated literal");
            value += source.mid(i + 1, close - i - 1);
            i = close + 1;
        } else if (source.mid(i, 5) == QLatin1String("ChrW(")) {
            const qsizetype close = source.indexOf(QLatin1Char(')'), i);
            value += QChar(static_cast<char16_t>(source.mid(i + 5, close - i - 5).toInt()));
            i = close + 1;
        } else {
            throw std::runtime_error("unexpected text at " + std::to_string(i));
        }
        expectJoin = true;
    }
    return value;
}

TEST(EncodeMacroLiteral, LatinOneTextPassesUnchanged)
{
    const QString text = QStringLiteral("C:\\Vault\\Caf\u00e9 & Co\\\u00ff\u00e0.mcdprt");
    EXPECT_EQ(EncodeMacroLiteral(text), text);
    EXPECT_EQ(EncodeMacroLiteral(QString()), QString());
}

TEST(EncodeMacroLiteral, WideCharactersBecomeChrWCalls)
{
    EXPECT_EQ(EncodeMacroLiteral(QStringLiteral("a") + kZhe + QStringLiteral("b")), "a\" & ChrW(1046) & \"b");
    // A wide first character leaves an empty literal before the call, a wide
    // last one an empty literal after it.
    EXPECT_EQ(EncodeMacroLiteral(QString(kZhe) + QStringLiteral("b")), "\" & ChrW(1046) & \"b");
    EXPECT_EQ(EncodeMacroLiteral(QStringLiteral("a") + kZhe), "a\" & ChrW(1046) & \"");
    // Neighbouring calls are joined directly.
    EXPECT_EQ(EncodeMacroLiteral(QString(kZhe) + QChar(0x20AC)), "\" & ChrW(1046) & ChrW(8364) & \"");
    // 256 is the first unit that needs a call.
    EXPECT_EQ(EncodeMacroLiteral(QString(QChar(0x100))), "\" & ChrW(256) & \"");
}

TEST(EncodeMacroLiteral, SurrogatePairsAreEncodedUnitByUnit)
{
    const QString emoji = QString::fromUcs4(U"\U0001F600");
    EXPECT_EQ(EncodeMacroLiteral(emoji), "\" & ChrW(55357) & ChrW(56832) & \"");
}

TEST(EncodeMacroLiteral, LongValuesBreakAfterAJoinPastOneHundredCharacters)
{
    const QString value = QStringLiteral("ab") + QString(20, kZhe) + QStringLiteral("c");
    const QString encoded = EncodeMacroLiteral(value);
    const QStringList lines = encoded.split(QStringLiteral("\r\n"));
    ASSERT_EQ(lines.size(), 3) << encoded.toStdString();

    // Joins start at 3, 16, 29, ...: the first at or after 100 is at 107.
    QString first = QStringLiteral("ab\"");
    for (int i = 0; i < 8; ++i)
        first += QStringLiteral(" & ChrW(1046)");
    first += QStringLiteral(" & _");
    EXPECT_EQ(lines[0], first);

    // The next line starts 6 past that join; its break comes at the first
    // join 100 or more characters into the line.
    QString second = QStringLiteral("ChrW(1046)");
    for (int i = 0; i < 7; ++i)
        second += QStringLiteral(" & ChrW(1046)");
    second += QStringLiteral(" & _");
    EXPECT_EQ(lines[1], second);

    QString third = QStringLiteral("ChrW(1046)");
    for (int i = 0; i < 3; ++i)
        third += QStringLiteral(" & ChrW(1046)");
    third += QStringLiteral(" & \"c");
    EXPECT_EQ(lines[2], third);

    EXPECT_EQ(evaluateLiteral(encoded), value);
}

TEST(EncodeMacroLiteral, OnlyTheEncodersOwnJoinsCarryABreak)
{
    // 150 characters with " & " of the value itself, then one wide character:
    // the value's joins stay on the line, the encoder's first join breaks.
    QString latin;
    while (latin.size() < 150)
        latin += QStringLiteral("x & ");
    latin.truncate(150);
    const QString encoded = EncodeMacroLiteral(latin + kZhe);
    EXPECT_EQ(encoded, latin + QStringLiteral("\" & _\r\nChrW(1046) & \""));
    EXPECT_EQ(evaluateLiteral(encoded), latin + kZhe);
}

TEST(EncodeMacroLiteral, TheJoinThatClosesOrReopensALiteralCanBreak)
{
    // 96 Latin characters: the closing join starts at 97, the reopening one at
    // 97 + 3 + 10 = 110 and takes the break.
    const QString before = QString(96, QLatin1Char('p'));
    EXPECT_EQ(EncodeMacroLiteral(before + kZhe + QStringLiteral("q")),
              before + QStringLiteral("\" & ChrW(1046) & _\r\n\"q"));
    // 99: the closing join starts at 100 and breaks at once.
    const QString longer = QString(99, QLatin1Char('p'));
    EXPECT_EQ(EncodeMacroLiteral(longer + kZhe + QStringLiteral("q")),
              longer + QStringLiteral("\" & _\r\nChrW(1046) & \"q"));
}

TEST(EncodeMacroLiteral, ReadsBackAsTheValueAndKeepsLinesShort)
{
    QRandomGenerator rng(1046);
    const QList<QChar> alphabet = {QChar('a'), QChar('\\'), QChar(' '), QChar('&'), QChar(0xE9), QChar(0xFF),
                                   QChar(0x100), kZhe, QChar(0x4E2D), QChar(0x20AC)};
    for (int round = 0; round < 300; ++round) {
        QString value;
        const int length = rng.bounded(0, 400);
        for (int i = 0; i < length; ++i)
            value += alphabet[rng.bounded(static_cast<int>(alphabet.size()))];
        const QString encoded = EncodeMacroLiteral(value);
        ASSERT_EQ(evaluateLiteral(encoded), value) << encoded.toStdString();
        const QStringList lines = encoded.split(QStringLiteral("\r\n"));
        for (qsizetype i = 0; i < lines.size(); ++i) {
            // Every broken line ends in a join that starts 100 or more
            // characters into it.
            if (i + 1 < lines.size()) {
                EXPECT_TRUE(lines[i].endsWith(QStringLiteral(" & _"))) << encoded.toStdString();
                EXPECT_GE(lines[i].size() - 4, 100) << encoded.toStdString();
            }
            for (QChar c : lines[i])
                ASSERT_LE(c.unicode(), 255);
        }
    }
}

} // namespace
