#include "base/codepage.h"

#include <gtest/gtest.h>

TEST(CodePageTest, EveryByteMapsLikeTheWindowsConversionAndSurvivesARoundTrip)
{
    // The 0x80-0x9F row is where the code page differs from Latin-1; its five
    // undefined bytes keep their value.
    const char16_t row80[32] = {
        0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
    };
    QByteArray all;
    for (int b = 0; b < 256; ++b)
        all.append(static_cast<char>(b));
    const QString text = decodeWindows1252(all);
    ASSERT_EQ(text.size(), 256);
    for (int b = 0; b < 256; ++b) {
        const char16_t expected = (b >= 0x80 && b < 0xA0) ? row80[b - 0x80] : char16_t(b);
        EXPECT_EQ(text.at(b).unicode(), expected) << b;
    }
    EXPECT_EQ(encodeWindows1252(text), all);
}

TEST(CodePageTest, CharactersOutsideTheCodePageBecomeOneQuestionMarkEach)
{
    EXPECT_EQ(encodeWindows1252(QStringLiteral("x\u4E2Dy")), QByteArray("x?y"));
    // A pair above the basic plane is one character, a lone half is one too.
    EXPECT_EQ(encodeWindows1252(QStringLiteral("a\U0001F600b")), QByteArray("a?b"));
    EXPECT_EQ(encodeWindows1252(QString(QChar(0xD800)) + QLatin1Char('c')), QByteArray("?c"));
    // Long text crosses the converter's buffer.
    const QString longText = QString(3000, QChar(0x20AC));
    EXPECT_EQ(encodeWindows1252(longText), QByteArray(3000, '\x80'));
    EXPECT_EQ(decodeWindows1252(QByteArray(3000, '\x80')), longText);
}

TEST(CodePageTest, PrintableAsciiReplacesEverythingElseOneForOne)
{
    EXPECT_EQ(printableAscii(QStringLiteral("a~ \u00e9\u0416\t\n\x7f!")), QByteArray("a~ _____!"));
}
