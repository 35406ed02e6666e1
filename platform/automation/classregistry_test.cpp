#include "platform/automation/classregistry.h"

#include "platform/memoryregistrystore.h"

#include <gtest/gtest.h>

namespace {

const ClassRegistry::LocalServer kServer{QStringLiteral("{AAAAAAAA-0000-0000-0000-000000000001}"), QStringLiteral("App"),
                                         QStringLiteral("\"/opt/app/APP.EXE\""), QStringLiteral("Vendor.App.3"),
                                         QStringLiteral("Vendor.App")};

TEST(ClassRegistryTest, ProgIdsLeadToTheClassAndItsServer)
{
    MemoryRegistryStore store;
    EXPECT_FALSE(ClassRegistry::classIdFromProgId(QStringLiteral("Vendor.App"), store));
    ASSERT_TRUE(ClassRegistry::registerLocalServer(kServer, store));
    EXPECT_EQ(ClassRegistry::classIdFromProgId(QStringLiteral("Vendor.App.3"), store), kServer.classId);
    EXPECT_EQ(ClassRegistry::classIdFromProgId(QStringLiteral("vendor.app"), store), kServer.classId);
    EXPECT_EQ(ClassRegistry::classValue(kServer.classId, QStringLiteral("LocalServer32"), store), kServer.commandLine);
    EXPECT_EQ(ClassRegistry::classValue(kServer.classId, QStringLiteral("ProgID"), store), "Vendor.App.3");
    EXPECT_FALSE(ClassRegistry::classIdFromProgId(QString(), store));

    // The classes root comes first, as in the merged view.
    store.createKey(RegistryRoot::ClassesRoot, RegistryView::Native, QStringLiteral("Vendor.App\\CLSID"));
    store.writeValue(RegistryRoot::ClassesRoot, RegistryView::Native, QStringLiteral("Vendor.App\\CLSID"), QString(),
                     RegistryValue::fromString(QStringLiteral("{OTHER}")));
    EXPECT_EQ(ClassRegistry::classIdFromProgId(QStringLiteral("Vendor.App"), store), "{OTHER}");
}

} // namespace
