#include "platform/automation/messageframing.h"

#include <QtEndian>

#include <gtest/gtest.h>

#include <vector>

TEST(MessageFramingTest, MessagesSurviveArbitrarySplits)
{
    QJsonObject first{{QStringLiteral("k"), QStringLiteral("call")}, {QStringLiteral("id"), 1}};
    QJsonObject second{{QStringLiteral("k"), QStringLiteral("reply")}, {QStringLiteral("id"), 2}};
    const QByteArray stream = wire::encodeFrame(first) + wire::encodeFrame(second);
    for (qsizetype cut = 0; cut <= stream.size(); ++cut) {
        wire::MessageFrameReader reader;
        std::vector<QJsonObject> got;
        reader.append(stream.left(cut));
        while (auto m = reader.next())
            got.push_back(*m);
        reader.append(stream.mid(cut));
        while (auto m = reader.next())
            got.push_back(*m);
        ASSERT_EQ(got.size(), 2u) << "cut at " << cut;
        EXPECT_EQ(got[0], first);
        EXPECT_EQ(got[1], second);
        EXPECT_FALSE(reader.broken());
    }
}

TEST(MessageFramingTest, OversizedOrGarbledFramesBreakTheStream)
{
    wire::MessageFrameReader tooLong;
    QByteArray header(4, Qt::Uninitialized);
    qToBigEndian<quint32>(static_cast<quint32>(wire::kMaxFrameBytes + 1), header.data());
    tooLong.append(header);
    EXPECT_FALSE(tooLong.next());
    EXPECT_TRUE(tooLong.broken());

    wire::MessageFrameReader garbled;
    qToBigEndian<quint32>(3u, header.data());
    garbled.append(header + "abc" + wire::encodeFrame(QJsonObject{{QStringLiteral("k"), 1}}));
    EXPECT_FALSE(garbled.next());
    EXPECT_TRUE(garbled.broken());
    EXPECT_FALSE(garbled.next()); // nothing after a break is trusted
}
