#include "addin/module/moduleregistration.h"

#include "host/classfactory.h"
#include "host/idoxaddin.h"
#include "platform/jsonregistrystore.h"
#include "platform/memoryregistrystore.h"

#include <QLibrary>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

constexpr auto HKCR = RegistryRoot::ClassesRoot;
constexpr auto Native = RegistryView::Native;
const QString ClassKey = QStringLiteral("CLSID\\{D22F1795-5A92-4B1E-9FD9-3A9D93D11FEB}");

QString readText(const RegistryStore &store, const QString &key, const QString &name = {})
{
    const auto v = store.readValue(HKCR, Native, key, name);
    return v ? v->text : QStringLiteral("<none>");
}

void expectRegistered(const RegistryStore &store, const QString &modulePath)
{
    EXPECT_EQ(readText(store, "McTaskAddIn.McTaskAddIn.1"), "McTaskAddIn Class");
    EXPECT_EQ(readText(store, "McTaskAddIn.McTaskAddIn.1\\CLSID"), "{D22F1795-5A92-4B1E-9FD9-3A9D93D11FEB}");
    EXPECT_EQ(readText(store, "McTaskAddIn.McTaskAddIn"), "McTaskAddIn Class");
    EXPECT_EQ(readText(store, "McTaskAddIn.McTaskAddIn\\CLSID"), "{D22F1795-5A92-4B1E-9FD9-3A9D93D11FEB}");
    EXPECT_EQ(readText(store, "McTaskAddIn.McTaskAddIn\\CurVer"), "McTaskAddIn.McTaskAddIn.1");
    EXPECT_EQ(readText(store, ClassKey), "McTaskAddIn Class");
    EXPECT_EQ(readText(store, ClassKey, "AppID"), "{F34A6435-746A-4BF8-83DC-D5A5301EFAC0}");
    EXPECT_EQ(readText(store, ClassKey + "\\ProgID"), "McTaskAddIn.McTaskAddIn.1");
    EXPECT_EQ(readText(store, ClassKey + "\\VersionIndependentProgID"), "McTaskAddIn.McTaskAddIn");
    EXPECT_TRUE(store.keyExists(HKCR, Native, ClassKey + "\\Programmable"));
    EXPECT_TRUE(store.valueNames(HKCR, Native, ClassKey + "\\Programmable").isEmpty());
    EXPECT_EQ(readText(store, ClassKey + "\\InprocServer32"), modulePath);
    EXPECT_EQ(readText(store, ClassKey + "\\InprocServer32", "ThreadingModel"), "Both");
    EXPECT_EQ(readText(store, ClassKey + "\\TypeLib"), "{D229FBD6-E3E3-4316-BAA4-2E07DCE997EF}");
    EXPECT_EQ(readText(store, "AppID\\{F34A6435-746A-4BF8-83DC-D5A5301EFAC0}"), "McTaskAddIn");
    EXPECT_EQ(readText(store, "AppID\\McTaskAddIn.DLL", "AppID"), "{F34A6435-746A-4BF8-83DC-D5A5301EFAC0}");
}

void expectUnregistered(const RegistryStore &store)
{
    for (const char *key : {"McTaskAddIn.McTaskAddIn.1", "McTaskAddIn.McTaskAddIn",
                            "CLSID\\{D22F1795-5A92-4B1E-9FD9-3A9D93D11FEB}",
                            "AppID\\{F34A6435-746A-4BF8-83DC-D5A5301EFAC0}", "AppID\\McTaskAddIn.DLL"})
        EXPECT_FALSE(store.keyExists(HKCR, Native, key)) << key;
    EXPECT_TRUE(store.keyExists(HKCR, Native, "CLSID"));
    EXPECT_TRUE(store.keyExists(HKCR, Native, "AppID"));
}

TEST(ModuleRegistration, RegisterTwiceReplacesTheClassKeyAndUnregisterKeepsSharedParents)
{
    MemoryRegistryStore store;
    // Another class and a stale entry under ours, as an older version might have left.
    store.createKey(HKCR, Native, "CLSID\\{11111111-2222-3333-4444-555555555555}");
    store.createKey(HKCR, Native, ClassKey + "\\Obsolete");

    ASSERT_EQ(registerAddInModule(store, "/opt/a/McTaskAddIn.so"), S_OK);
    expectRegistered(store, "/opt/a/McTaskAddIn.so");
    EXPECT_FALSE(store.keyExists(HKCR, Native, ClassKey + "\\Obsolete"));

    ASSERT_EQ(registerAddInModule(store, "/opt/b/McTaskAddIn.so"), S_OK);
    expectRegistered(store, "/opt/b/McTaskAddIn.so");
    EXPECT_EQ(store.subKeys(HKCR, Native, "CLSID").size(), 2);
    EXPECT_EQ(store.subKeys(HKCR, Native, ClassKey).size(), 5);

    ASSERT_EQ(unregisterAddInModule(store), S_OK);
    expectUnregistered(store);
    EXPECT_TRUE(store.keyExists(HKCR, Native, "CLSID\\{11111111-2222-3333-4444-555555555555}"));
    EXPECT_EQ(unregisterAddInModule(store), S_OK);
}

// The real module, loaded as the host loads it: its entry points register it
// in the store under MCTASK_HOME and hand out working add-in objects.
TEST(AddInModule, LoadsRegistersAndCreatesTheAddIn)
{
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    qputenv("MCTASK_HOME", home.path().toLocal8Bit());

    QLibrary module(QStringLiteral(MCTASK_ADDIN_MODULE));
    ASSERT_TRUE(module.load()) << module.errorString().toStdString();
    auto reg = reinterpret_cast<DllRegisterServerFn>(module.resolve("DllRegisterServer"));
    auto unreg = reinterpret_cast<DllUnregisterServerFn>(module.resolve("DllUnregisterServer"));
    auto getClass = reinterpret_cast<DllGetClassObjectFn>(module.resolve("DllGetClassObject"));
    auto canUnload = reinterpret_cast<DllCanUnloadNowFn>(module.resolve("DllCanUnloadNow"));
    ASSERT_TRUE(reg && unreg && getClass && canUnload);

    ASSERT_EQ(reg(), S_OK);
    {
        JsonRegistryStore store(home.filePath("registry.json"));
        expectRegistered(store, QFileInfo(QStringLiteral(MCTASK_ADDIN_MODULE)).absoluteFilePath());
    }

    HostObjectPtr factoryObject;
    EXPECT_EQ(getClass("{00000000-0000-0000-0000-000000000000}", factoryObject), CLASS_E_CLASSNOTAVAILABLE);
    ASSERT_EQ(getClass("{d22f1795-5a92-4b1e-9fd9-3a9d93d11feb}", factoryObject), S_OK);
    auto factory = queryInterface<IClassFactory>(factoryObject);
    ASSERT_TRUE(factory);
    HostObjectPtr object;
    ASSERT_EQ(factory->CreateInstance(nullptr, object), S_OK);
    EXPECT_EQ(canUnload(), S_FALSE);
    auto addin = queryInterface<IDoxAddIn5>(object);
    ASSERT_TRUE(addin);

    addin.reset();
    object.reset();
    factory.reset();
    factoryObject.reset();
    EXPECT_EQ(canUnload(), S_OK);

    ASSERT_EQ(unreg(), S_OK);
    JsonRegistryStore store(home.filePath("registry.json"));
    expectUnregistered(store);
    qunsetenv("MCTASK_HOME");
}

} // namespace
