#include "cad/vaultclientchannel.h"

#include "platform/ipc/namedmutex.h"
#include "platform/ipc/vaultclientlistener.h"
#include "platform/ipc/vaultclientmessage.h"

#include <QSet>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

class VaultClientChannelTest : public ::testing::Test
{
protected:
    QTemporaryDir m_dir;
    VaultClientListener m_listener{m_dir.path()};
};

TEST_F(VaultClientChannelTest, WithoutServerReturnsAndLeavesTheMutexFree)
{
    VaultClientChannel(m_dir.path()).notify(1, QStringLiteral("V:\\a.pdf"));
    NamedMutex probe(VaultClientMessage::MutexName, m_dir.path());
    EXPECT_TRUE(probe.tryLock());

    // A folder that cannot even hold the lock file: still silent.
    VaultClientChannel(QStringLiteral("/proc/nowhere")).notify(1, QStringLiteral("V:\\a.pdf"));
}

TEST_F(VaultClientChannelTest, HoldsTheMutexForTheWholeExchange)
{
    std::atomic<int> heldDuringExchange{-1};
    m_listener.setObserver([&](const VaultClientListener::Message &) {
        NamedMutex probe(VaultClientMessage::MutexName, m_dir.path());
        heldDuringExchange = probe.tryLock() ? 0 : 1;
    });
    ASSERT_TRUE(m_listener.start());
    VaultClientChannel(m_dir.path()).notify(1, QStringLiteral("V:\\a.pdf"));
    EXPECT_EQ(heldDuringExchange, 1);

    NamedMutex after(VaultClientMessage::MutexName, m_dir.path());
    EXPECT_TRUE(after.tryLock());
}

TEST_F(VaultClientChannelTest, ParallelWorkersWaitForTheMutexAndEveryMessageArrivesWhole)
{
    std::atomic<int> unlockedExchanges{0};
    m_listener.setObserver([&](const VaultClientListener::Message &) {
        NamedMutex probe(VaultClientMessage::MutexName, m_dir.path());
        if (probe.tryLock())
            ++unlockedExchanges;
    });
    ASSERT_TRUE(m_listener.start());
    constexpr int kEach = 10;
    std::vector<std::thread> workers;
    {
        // A third party (another task process) holds the mutex: both
        // workers' messages wait for it, in one process as across processes.
        VaultClientLock held(m_dir.path());
        ASSERT_TRUE(held.isLocked());
        for (int w = 0; w < 2; ++w)
            workers.emplace_back([this, w] {
                VaultClientChannel channel(m_dir.path());
                for (int i = 0; i < kEach; ++i)
                    channel.notify(1, QStringLiteral("V:\\w%1\\out%2.pdf").arg(w).arg(i));
            });
        QThread::msleep(200);
        EXPECT_TRUE(m_listener.messages().empty());
    }
    for (std::thread &worker : workers)
        worker.join();
    const auto messages = m_listener.messages();
    ASSERT_EQ(messages.size(), 2u * kEach);
    QSet<QString> paths;
    for (const auto &message : messages) {
        EXPECT_TRUE(message.valid);
        paths.insert(message.path);
    }
    EXPECT_EQ(paths.size(), 2 * kEach);
    EXPECT_TRUE(paths.contains(QStringLiteral("V:\\w1\\out9.pdf")));
    EXPECT_EQ(unlockedExchanges, 0);
}

TEST_F(VaultClientChannelTest, FreeFunctionsUseTheHomeFolderAndTheLockHoldsUntilDestroyed)
{
    qputenv("MCTASK_HOME", m_dir.path().toLocal8Bit());
    ASSERT_TRUE(m_listener.start());
    NotifyVaultClient(1, QStringLiteral("V:\\home.pdf"));
    {
        VaultClientLock lock;
        EXPECT_TRUE(lock.isLocked());
        NamedMutex probe(VaultClientMessage::MutexName, m_dir.path());
        EXPECT_FALSE(probe.tryLock());
    }
    qunsetenv("MCTASK_HOME");
    NamedMutex released(VaultClientMessage::MutexName, m_dir.path());
    EXPECT_TRUE(released.tryLock());

    const auto messages = m_listener.messages();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].path, QStringLiteral("V:\\home.pdf"));
}

} // namespace
