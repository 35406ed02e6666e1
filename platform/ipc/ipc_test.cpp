#include "platform/ipc/ipcnames.h"
#include "platform/ipc/namedmutex.h"
#include "platform/ipc/pipeclient.h"
#include "platform/ipc/pipelistener.h"
#include "platform/ipc/vaultclientlistener.h"
#include "platform/ipc/vaultclientmessage.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

namespace {

TEST(VaultClientMessageTest, EncodesCodePathAndTerminatorLittleEndian)
{
    const QByteArray raw = VaultClientMessage::encode(1, QStringLiteral("C:\\a"));
    ASSERT_EQ(raw.size(), 4 + 2 * 4 + 2);
    EXPECT_EQ(raw.left(4), QByteArray("\x01\x00\x00\x00", 4));
    EXPECT_EQ(raw.mid(4), QByteArray("C\0:\0\\\0a\0\0\0", 10));

    const QByteArray negative = VaultClientMessage::encode(-2, QString());
    EXPECT_EQ(negative, QByteArray("\xfe\xff\xff\xff\x00\x00", 6));
}

TEST(VaultClientMessageTest, CutsLongPathsTo260Characters)
{
    QString path;
    for (int i = 0; i < 300; ++i)
        path.append(QChar(u'a' + i % 26));
    const QByteArray raw = VaultClientMessage::encode(1, path);
    EXPECT_EQ(raw.size(), 4 + 2 * 260 + 2);
    const auto decoded = VaultClientMessage::decode(raw);
    EXPECT_TRUE(decoded.valid);
    EXPECT_EQ(decoded.path, path.left(260));

    const QString exact(260, QChar(u'x'));
    EXPECT_EQ(VaultClientMessage::decode(VaultClientMessage::encode(1, exact)).path, exact);
}

TEST(VaultClientMessageTest, DecodeRoundTripsUtf16AndRejectsBrokenMessages)
{
    const QString path = QStringLiteral("V:\\Bau\\Maß \U0001F600.mcdprt");
    const auto decoded = VaultClientMessage::decode(VaultClientMessage::encode(7, path));
    EXPECT_TRUE(decoded.valid);
    EXPECT_EQ(decoded.code, 7);
    EXPECT_EQ(decoded.path, path);

    EXPECT_FALSE(VaultClientMessage::decode(QByteArray("\x01\x00", 2)).valid);
    // A path without its terminating zero.
    EXPECT_FALSE(VaultClientMessage::decode(QByteArray("\x01\x00\x00\x00" "a\0", 6)).valid);
    // An odd trailing byte after the terminator does not matter.
    EXPECT_TRUE(VaultClientMessage::decode(QByteArray("\x01\x00\x00\x00" "a\0\0\0x", 9)).valid);
}

TEST(IpcNamesTest, PipeAndMutexNamesBecomeFilesInTheFolder)
{
    EXPECT_EQ(IpcNames::pipeSocketPath(VaultClientMessage::PipeName, QStringLiteral("/h")),
              QStringLiteral("/h/9E0E8EB3-C8DC-4772-8E45-44C907C2D30B"));
    EXPECT_EQ(IpcNames::mutexLockPath(VaultClientMessage::MutexName, QStringLiteral("/h")),
              QStringLiteral("/h/{2F22C261-233E-4dcf-A4BD-0443B7120F4A}"));
    EXPECT_EQ(IpcNames::pipeSocketPath(QStringLiteral("a/../b"), QStringLiteral("/h")), QStringLiteral("/h/a_.._b"));
}

TEST(NamedMutexTest, ExcludesOtherHoldersUntilReleased)
{
    QTemporaryDir dir;
    NamedMutex first(QStringLiteral("{m}"), dir.path() + QStringLiteral("/sub"));
    NamedMutex second(QStringLiteral("{m}"), dir.path() + QStringLiteral("/sub"));
    ASSERT_TRUE(first.isValid());
    EXPECT_TRUE(QFile::exists(dir.path() + QStringLiteral("/sub/{m}")));

    ASSERT_TRUE(first.lock());
    EXPECT_FALSE(second.tryLock());
    first.unlock();
    EXPECT_TRUE(second.tryLock());
    EXPECT_FALSE(first.tryLock());
    second.unlock();

    // A different name is a different mutex.
    NamedMutex other(QStringLiteral("{n}"), dir.path() + QStringLiteral("/sub"));
    ASSERT_TRUE(first.lock());
    EXPECT_TRUE(other.tryLock());
}

TEST(PipeTest, OneRequestOneReplyPerConnection)
{
    QTemporaryDir dir;
    PipeListener listener(QStringLiteral("\\\\.\\pipe\\p1"), dir.path());
    ASSERT_TRUE(listener.start([](const QByteArray &request) { return QByteArray("re:") + request; }));

    for (const QByteArray &request : {QByteArray("one"), QByteArray(3000, 'z')}) {
        PipeClient client(QStringLiteral("\\\\.\\pipe\\p1"), dir.path());
        ASSERT_TRUE(client.open());
        ASSERT_TRUE(client.write(request));
        QByteArray reply;
        ASSERT_TRUE(client.read(8192, reply));
        EXPECT_EQ(reply, QByteArray("re:") + request);
    }

    // A reply longer than the reader's buffer is cut, as a message read is.
    PipeClient client(QStringLiteral("\\\\.\\pipe\\p1"), dir.path());
    ASSERT_TRUE(client.open());
    ASSERT_TRUE(client.write(QByteArray(100, 'y')));
    QByteArray reply;
    ASSERT_TRUE(client.read(10, reply));
    EXPECT_EQ(reply.size(), 10);
}

TEST(PipeTest, ClientFailsWithoutServerAndListenerRefusesAServedPipe)
{
    QTemporaryDir dir;
    PipeClient client(QStringLiteral("p2"), dir.path());
    EXPECT_FALSE(client.open());
    EXPECT_FALSE(client.write("x"));
    QByteArray reply;
    EXPECT_FALSE(client.read(10, reply));

    // A stale socket file from a dead server is taken over.
    QFile stale(dir.path() + QStringLiteral("/p2"));
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
    stale.close();
    PipeListener first(QStringLiteral("p2"), dir.path());
    ASSERT_TRUE(first.start([](const QByteArray &) { return QByteArray("1"); }));

    PipeListener second(QStringLiteral("p2"), dir.path());
    EXPECT_FALSE(second.start([](const QByteArray &) { return QByteArray("2"); }));

    first.stop();
    EXPECT_FALSE(QFile::exists(dir.path() + QStringLiteral("/p2")));
    EXPECT_FALSE(client.open());
    EXPECT_TRUE(second.start([](const QByteArray &) { return QByteArray("2"); }));
    ASSERT_TRUE(client.open());
    ASSERT_TRUE(client.write("x"));
    ASSERT_TRUE(client.read(10, reply));
    EXPECT_EQ(reply, QByteArray("2"));
}

TEST(PipeTest, PathTooLongForASocketFailsQuietly)
{
    const QString folder = QStringLiteral("/tmp/") + QString(120, QChar(u'd'));
    PipeListener listener(QStringLiteral("p"), folder);
    EXPECT_FALSE(listener.start([](const QByteArray &r) { return r; }));
    PipeClient client(QStringLiteral("p"), folder);
    EXPECT_FALSE(client.open());
}

TEST(VaultClientListenerTest, RecordsDecodedMessagesAndAcknowledges)
{
    QTemporaryDir dir;
    VaultClientListener listener(dir.path());
    std::vector<QString> observed;
    listener.setObserver([&](const VaultClientListener::Message &m) { observed.push_back(m.path); });
    ASSERT_TRUE(listener.start());

    PipeClient client(VaultClientMessage::PipeName, dir.path());
    ASSERT_TRUE(client.open());
    ASSERT_TRUE(client.write(VaultClientMessage::encode(1, QStringLiteral("V:\\x.pdf"))));
    QByteArray reply;
    ASSERT_TRUE(client.read(256, reply));
    EXPECT_EQ(qFromLittleEndian<std::int32_t>(reply.constData()), 0);

    ASSERT_TRUE(client.open());
    ASSERT_TRUE(client.write(QByteArray("\x01\x00", 2)));
    ASSERT_TRUE(client.read(256, reply));
    EXPECT_EQ(qFromLittleEndian<std::int32_t>(reply.constData()), 1);

    const auto messages = listener.messages();
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_TRUE(messages[0].valid);
    EXPECT_EQ(messages[0].code, 1);
    EXPECT_EQ(messages[0].path, QStringLiteral("V:\\x.pdf"));
    EXPECT_EQ(messages[0].byteCount, 4 + 2 * 8 + 2);
    EXPECT_FALSE(messages[1].valid);
    EXPECT_EQ(observed.size(), 2u);

    // The same path twice more, and another: one tally per code and path.
    for (const QString &path : {QStringLiteral("V:\\x.pdf"), QStringLiteral("V:\\y.pdf"), QStringLiteral("V:\\x.pdf")}) {
        ASSERT_TRUE(client.open());
        ASSERT_TRUE(client.write(VaultClientMessage::encode(1, path)));
        ASSERT_TRUE(client.read(256, reply));
    }
    const auto tallies = listener.tally();
    ASSERT_EQ(tallies.size(), 3u);
    EXPECT_EQ(tallies[0].message.path, QStringLiteral("V:\\x.pdf"));
    EXPECT_EQ(tallies[0].count, 3);
    EXPECT_FALSE(tallies[1].message.valid);
    EXPECT_EQ(tallies[1].count, 1);
    EXPECT_EQ(tallies[2].message.path, QStringLiteral("V:\\y.pdf"));
    EXPECT_EQ(tallies[2].count, 1);

    listener.clear();
    EXPECT_TRUE(listener.messages().empty());
}

} // namespace
