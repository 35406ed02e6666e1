#include "base/codepage.h"

#include <gtest/gtest.h>

TEST(CodePageTest, EveryByteSurvivesARoundTrip)
{
    QByteArray all;
    for (int b = 0; b < 256; ++b)
        all.append(static_cast<char>(b));
    const QString text = decodeWindows1252(all);
    ASSERT_EQ(text.size(), 256);
    EXPECT_EQ(encodeWindows1252(text), all);
    EXPECT_EQ(text.mid(0x80, 1), QStringLiteral("\u20AC"));
    EXPECT_EQ(text.mid(0x93, 2), QStringLiteral("\u201C\u201D"));
    EXPECT_EQ(text.mid(0xE9, 1), QStringLiteral("\u00E9"));
}

TEST(CodePageTest, TheFiveUndefinedBytesKeepTheirValue)
{
    for (const unsigned char b : {0x81, 0x8D, 0x8F, 0x90, 0x9D}) {
        const QByteArray byte(1, static_cast<char>(b));
        EXPECT_EQ(decodeWindows1252("a" + byte + "b"), QString(QLatin1Char('a')) + QChar(b) + QLatin1Char('b')) << int(b);
    }
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
