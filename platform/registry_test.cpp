#include "platform/jsonregistrystore.h"
#include "platform/qtestprint.h"
#include "platform/memoryregistrystore.h"
#include "platform/registry.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr auto HKLM = RegistryRoot::LocalMachine;
constexpr auto HKCU = RegistryRoot::CurrentUser;
constexpr auto HKCR = RegistryRoot::ClassesRoot;
constexpr auto Native = RegistryView::Native;

// The same contract holds for the memory store and the file store.
template <class Store>
class RegistryStoreTest : public ::testing::Test
{
protected:
    std::unique_ptr<RegistryStore> makeStore()
    {
        if constexpr (std::is_same_v<Store, JsonRegistryStore>)
            return std::make_unique<JsonRegistryStore>(m_dir.path() + "/registry.json");
        else
            return std::make_unique<MemoryRegistryStore>();
    }

    QTemporaryDir m_dir;
};

using StoreTypes = ::testing::Types<MemoryRegistryStore, JsonRegistryStore>;
TYPED_TEST_SUITE(RegistryStoreTest, StoreTypes);

} // namespace

TYPED_TEST(RegistryStoreTest, KeysAndValuesAreCaseInsensitiveAndKeepTheirCase)
{
    auto store = this->makeStore();
    ASSERT_TRUE(store->createKey(HKLM, Native, "Software\\Mecadra\\Applications"));
    EXPECT_TRUE(store->keyExists(HKLM, Native, "software\\MECADRA"));
    EXPECT_TRUE(store->keyExists(HKLM, Native, "\\Software\\\\Mecadra\\"));
    EXPECT_FALSE(store->keyExists(HKLM, Native, "Software\\Other"));

    ASSERT_TRUE(store->writeValue(HKLM, Native, "SOFTWARE\\mecadra", "DateFmt", RegistryValue::fromDword(3)));
    ASSERT_TRUE(store->writeValue(HKLM, Native, "Software\\Mecadra", "datefmt", RegistryValue::fromDword(4)));
    EXPECT_EQ(store->readValue(HKLM, Native, "software\\mecadra", "DATEFMT"), RegistryValue::fromDword(4));
    EXPECT_EQ(store->valueNames(HKLM, Native, "Software\\Mecadra"), QStringList{"DateFmt"});
    EXPECT_EQ(store->subKeys(HKLM, Native, "Software"), QStringList{"Mecadra"});

    // Creating a key again in another case keeps the first spelling.
    ASSERT_TRUE(store->createKey(HKLM, Native, "SOFTWARE\\MECADRA\\Vaults"));
    EXPECT_EQ(store->subKeys(HKLM, Native, "Software\\Mecadra"), (QStringList{"Applications", "Vaults"}));
}

TYPED_TEST(RegistryStoreTest, ValuesKeepTheirTypes)
{
    auto store = this->makeStore();
    ASSERT_TRUE(store->createKey(HKCU, Native, "K"));
    ASSERT_TRUE(store->writeValue(HKCU, Native, "K", "big", RegistryValue::fromDword(0xFFFFFFFFu)));
    ASSERT_TRUE(store->writeValue(HKCU, Native, "K", "s", RegistryValue::fromString("a \"quoted\"\ttext")));
    ASSERT_TRUE(store->writeValue(HKCU, Native, "K", "e", RegistryValue::fromExpandString("%HOME%\\x")));
    ASSERT_TRUE(store->writeValue(HKCU, Native, "K", "", RegistryValue::fromString("default")));
    EXPECT_EQ(store->readValue(HKCU, Native, "K", "big"), RegistryValue::fromDword(0xFFFFFFFFu));
    EXPECT_EQ(store->readValue(HKCU, Native, "K", "s"), RegistryValue::fromString("a \"quoted\"\ttext"));
    EXPECT_EQ(store->readValue(HKCU, Native, "K", "e"), RegistryValue::fromExpandString("%HOME%\\x"));
    EXPECT_EQ(store->readValue(HKCU, Native, "K", ""), RegistryValue::fromString("default"));
    EXPECT_EQ(store->readValue(HKCU, Native, "K", "missing"), std::nullopt);
    EXPECT_EQ(store->readValue(HKCU, Native, "Missing", "s"), std::nullopt);
}

TYPED_TEST(RegistryStoreTest, WritesNeedAnExistingKeyAndDeletesReportWhatWasThere)
{
    auto store = this->makeStore();
    EXPECT_FALSE(store->writeValue(HKLM, Native, "No\\Such", "v", RegistryValue::fromDword(1)));
    EXPECT_FALSE(store->keyExists(HKLM, Native, "No"));

    ASSERT_TRUE(store->createKey(HKCR, Native, "CLSID\\{A}\\InprocServer32"));
    ASSERT_TRUE(store->writeValue(HKCR, Native, "CLSID\\{A}\\InprocServer32", "ThreadingModel",
                                  RegistryValue::fromString("Both")));
    ASSERT_TRUE(store->createKey(HKCR, Native, "CLSID\\{B}"));
    EXPECT_TRUE(store->deleteValue(HKCR, Native, "CLSID\\{A}\\InprocServer32", "threadingmodel"));
    EXPECT_FALSE(store->deleteValue(HKCR, Native, "CLSID\\{A}\\InprocServer32", "ThreadingModel"));

    ASSERT_TRUE(store->writeValue(HKCR, Native, "CLSID\\{A}\\InprocServer32", "x", RegistryValue::fromDword(1)));
    EXPECT_TRUE(store->deleteKeyTree(HKCR, Native, "clsid\\{a}"));
    EXPECT_FALSE(store->keyExists(HKCR, Native, "CLSID\\{A}\\InprocServer32"));
    EXPECT_TRUE(store->keyExists(HKCR, Native, "CLSID\\{B}"));
    EXPECT_FALSE(store->deleteKeyTree(HKCR, Native, "CLSID\\{A}"));
    EXPECT_FALSE(store->deleteKeyTree(HKCR, Native, ""));
    EXPECT_TRUE(store->subKeys(HKCR, Native, "CLSID\\{A}").isEmpty());
}

TYPED_TEST(RegistryStoreTest, MachineRootsHaveSeparate32BitViewsButTheUserRootIsShared)
{
    auto store = this->makeStore();
    ASSERT_TRUE(store->createKey(HKLM, RegistryView::View32, "Software\\App"));
    EXPECT_FALSE(store->keyExists(HKLM, RegistryView::View64, "Software\\App"));
    EXPECT_FALSE(store->keyExists(HKLM, Native, "Software\\App"));
    ASSERT_TRUE(store->createKey(HKLM, RegistryView::View64, "Software\\Other"));
    EXPECT_TRUE(store->keyExists(HKLM, Native, "Software\\Other"));

    ASSERT_TRUE(store->createKey(HKCU, RegistryView::View32, "Software\\App"));
    EXPECT_TRUE(store->keyExists(HKCU, RegistryView::View64, "Software\\App"));
    // Roots are separate trees.
    EXPECT_FALSE(store->keyExists(HKCR, Native, "Software\\Other"));
}

TEST(JsonRegistryStoreTest, InstancesOnOneFileSeeEachOthersWrites)
{
    QTemporaryDir dir;
    const QString file = dir.path() + "/sub/registry.json";
    JsonRegistryStore first(file);
    JsonRegistryStore second(file);
    EXPECT_FALSE(second.keyExists(HKLM, Native, "A"));
    ASSERT_TRUE(first.createKey(HKLM, Native, "A"));
    ASSERT_TRUE(first.writeValue(HKLM, Native, "A", "v", RegistryValue::fromDword(1)));
    EXPECT_EQ(second.readValue(HKLM, Native, "A", "v"), RegistryValue::fromDword(1));
    // A write of the second instance starts from what the first wrote.
    ASSERT_TRUE(second.writeValue(HKLM, Native, "A", "w", RegistryValue::fromDword(2)));
    ASSERT_TRUE(first.writeValue(HKLM, Native, "A", "v", RegistryValue::fromDword(3)));
    EXPECT_EQ(second.valueNames(HKLM, Native, "A"), (QStringList{"v", "w"}));
    EXPECT_EQ(second.readValue(HKLM, Native, "A", "v"), RegistryValue::fromDword(3));
}

TEST(JsonRegistryStoreTest, ConcurrentWritersLoseNothing)
{
    QTemporaryDir dir;
    const QString file = dir.path() + "/registry.json";
    JsonRegistryStore setup(file);
    ASSERT_TRUE(setup.createKey(HKCU, Native, "Shared"));
    auto writer = [&](const QString &prefix) {
        JsonRegistryStore store(file);
        for (int i = 0; i < 40; ++i)
            EXPECT_TRUE(store.writeValue(HKCU, Native, "Shared", prefix + QString::number(i),
                                         RegistryValue::fromDword(i)));
    };
    std::thread a(writer, QStringLiteral("a"));
    std::thread b(writer, QStringLiteral("b"));
    a.join();
    b.join();
    JsonRegistryStore reader(file);
    EXPECT_EQ(reader.valueNames(HKCU, Native, "Shared").size(), 80);
}

TEST(JsonRegistryStoreTest, TwoProcessesWritingAtOnceLoseNothing)
{
    QTemporaryDir dir;
    const QString file = dir.path() + "/registry.json";
    ASSERT_TRUE(JsonRegistryStore(file).createKey(HKLM, Native, "Shared"));
    auto writeValues = [&](const QString &prefix) {
        JsonRegistryStore store(file);
        bool ok = true;
        for (int i = 0; i < 25; ++i)
            ok = store.writeValue(HKLM, Native, "Shared", prefix + QString::number(i), RegistryValue::fromDword(i)) && ok;
        return ok;
    };
    const pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0)
        ::_exit(writeValues("child") ? 0 : 1);
    const bool parentOk = writeValues("parent");
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(parentOk);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(JsonRegistryStore(file).valueNames(HKLM, Native, "Shared").size(), 50);
}

TEST(JsonRegistryStoreTest, ADamagedFileReadsEmptyAndIsReplacedByTheNextWrite)
{
    QTemporaryDir dir;
    const QString file = dir.path() + "/registry.json";
    {
        QFile out(file);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        out.write("{ not json");
    }
    JsonRegistryStore store(file);
    EXPECT_FALSE(store.keyExists(HKLM, Native, "Software"));
    ASSERT_TRUE(store.createKey(HKLM, Native, "Software"));
    JsonRegistryStore again(file);
    EXPECT_TRUE(again.keyExists(HKLM, Native, "Software"));
}

TEST(RegistryKeyTest, AccessRightsDecideWhatAKeyMayDo)
{
    MemoryRegistryStore store;
    Registry key(store);
    EXPECT_FALSE(key.open(HKLM, "Software\\Missing"));
    EXPECT_FALSE(key.isOpen());
    // Creating needs write access; with read access only it is a plain open.
    EXPECT_FALSE(key.create(HKLM, "Software\\Missing", RegistryRead));
    EXPECT_FALSE(store.keyExists(HKLM, Native, "Software\\Missing"));

    ASSERT_TRUE(key.create(HKLM, "Software\\App"));
    EXPECT_TRUE(key.writeDword("Count", 7));
    EXPECT_TRUE(key.writeString("Name", "x"));

    Registry reader(store);
    ASSERT_TRUE(reader.open(HKLM, "software\\app", RegistryRead));
    EXPECT_EQ(reader.readDword("count"), 7u);
    EXPECT_FALSE(reader.writeDword("Count", 8));
    EXPECT_FALSE(reader.deleteValue("Count"));
    EXPECT_EQ(reader.readDword("Count"), 7u);

    Registry writer(store);
    ASSERT_TRUE(writer.open(HKLM, "Software\\App", RegistryWrite));
    EXPECT_EQ(writer.readDword("Count"), std::nullopt); // no read access
    EXPECT_TRUE(writer.deleteValue("Count"));

    reader.close();
    EXPECT_EQ(reader.readString("Name"), std::nullopt);
    EXPECT_TRUE(reader.valueNames().isEmpty());
}

TEST(RegistryKeyTest, TypedReadsRefuseValuesOfTheOtherKind)
{
    MemoryRegistryStore store;
    Registry key(store);
    ASSERT_TRUE(key.create(HKCU, "K"));
    ASSERT_TRUE(key.writeDword("n", 5));
    ASSERT_TRUE(key.writeString("s", "5"));
    qputenv("MCTASK_REGISTRY_TEST_DIR", "/opt/x");
    ASSERT_TRUE(key.writeExpandString("e", "%MCTASK_REGISTRY_TEST_DIR%\\bin;%MCTASK_UNSET_VARIABLE%"));
    EXPECT_EQ(key.readDword("s"), std::nullopt);
    EXPECT_EQ(key.readString("n"), std::nullopt);
    EXPECT_EQ(key.readString("e"), "%MCTASK_REGISTRY_TEST_DIR%\\bin;%MCTASK_UNSET_VARIABLE%");
    EXPECT_EQ(key.readExpandedString("e"), "/opt/x\\bin;%MCTASK_UNSET_VARIABLE%");
    EXPECT_EQ(key.readExpandedString("s"), "5");
}

TEST(RegistryKeyTest, SubKeysInheritRootViewAndStore)
{
    MemoryRegistryStore store;
    Registry root(store);
    ASSERT_TRUE(root.create(HKLM, "Software\\Vendor", RegistryReadWrite, RegistryView::View32));
    Registry vault = root.createSubKey("Vaults\\Demo");
    ASSERT_TRUE(vault.isOpen());
    EXPECT_EQ(vault.path(), "Software\\Vendor\\Vaults\\Demo");
    EXPECT_TRUE(vault.writeDword("DateFmt", 2));
    EXPECT_TRUE(store.keyExists(HKLM, RegistryView::View32, "Software\\Vendor\\Vaults\\Demo"));
    EXPECT_FALSE(store.keyExists(HKLM, Native, "Software\\Vendor"));

    Registry again = root.openSubKey("vaults\\demo");
    EXPECT_EQ(again.readDword("DateFmt"), 2u);
    EXPECT_FALSE(root.openSubKey("Vaults\\Other").isOpen());
    EXPECT_EQ(root.subKeys(), QStringList{"Vaults"});

    Registry moved = std::move(again);
    EXPECT_TRUE(moved.isOpen());
    EXPECT_FALSE(again.isOpen()); // NOLINT(bugprone-use-after-move): moved-from handles are closed

    EXPECT_TRUE(root.deleteSubKeyTree("Vaults"));
    EXPECT_FALSE(root.deleteSubKeyTree(""));
    EXPECT_FALSE(moved.readDword("DateFmt").has_value());
}

TEST(RegistryStoreNamesTest, RootNamesAndEnvironmentExpansion)
{
    EXPECT_EQ(registryRootFromName("hkey_local_machine"), HKLM);
    EXPECT_EQ(registryRootFromName("HKCU"), HKCU);
    EXPECT_EQ(registryRootFromName("HKCR"), HKCR);
    EXPECT_EQ(registryRootFromName("HKU"), std::nullopt);
    EXPECT_EQ(registryRootName(HKCR), "HKEY_CLASSES_ROOT");
    qputenv("MCTASK_EXPAND_A", "x");
    EXPECT_EQ(expandEnvironmentStrings("%MCTASK_EXPAND_A%%MCTASK_EXPAND_A%-%%-100%"), "xx-%%-100%");
}
