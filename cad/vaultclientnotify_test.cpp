#include "cad/vaultclientchannel.h"

#include "platform/drivemap.h"
#include "platform/ipc/vaultclientlistener.h"
#include "platform/memoryfilesystem.h"
#include "run/taskrunrecord.h"
#include "run/testing/runfakes.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// Outputs registered during a run reach a listening vault client through
// the real channel.
TEST(VaultClientNotifyTest, RegisteredOutputsAreAnnouncedOnThePipe)
{
    QTemporaryDir dir;
    VaultClientListener listener(dir.path());
    ASSERT_TRUE(listener.start());

    MemoryFileSystem fs;
    ScopedFileSystem fsGuard(fs);
    DriveMap drives;
    drives.mount(QLatin1Char('V'), QStringLiteral("/mnt/v"));
    ScopedDriveMap drivesGuard(drives);

    auto vault = std::make_shared<RunTestVault>();
    auto folder = vault->addFolder(20, QStringLiteral("V:\\Vault\\Out"));
    vault->addFile(folder, 31, QStringLiteral("old.pdf"));

    const VaultClientChannel channel(dir.path());
    TaskRunRecord record;
    record.setVaultClientNotifier([&](std::int32_t code, const QString &path) { channel.notify(code, path); });
    ASSERT_EQ(record.start(vault, 1, true), S_OK);
    record.registerOutput(QStringLiteral("V:\\Vault\\Out\\new.pdf"), QString(), false);
    record.registerOutput(QStringLiteral("V:\\Vault\\Out\\old.pdf"), QString(), false);
    record.registerOutput(QStringLiteral("V:\\Vault\\Out\\NEW.pdf"), QString(), false);

    const auto messages = listener.messages();
    ASSERT_EQ(messages.size(), 7u);
    for (size_t i = 0; i < messages.size(); ++i) {
        EXPECT_EQ(messages[i].code, 1);
        EXPECT_EQ(messages[i].path, i < 3 ? QStringLiteral("V:\\Vault\\Out\\new.pdf")
                                          : QStringLiteral("V:\\Vault\\Out\\old.pdf"));
    }
}

} // namespace
