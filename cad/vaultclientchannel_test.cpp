#include "cad/vaultclientchannel.h"

#include "platform/ipc/namedmutex.h"
#include "platform/ipc/vaultclientlistener.h"
#include "platform/ipc/vaultclientmessage.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>

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
