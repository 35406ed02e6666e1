#include "platform/installedproducts.h"
#include "platform/memoryregistrystore.h"

#include <gtest/gtest.h>

TEST(InstalledProductsTest, AddListReplaceAndRemove)
{
    MemoryRegistryStore store;
    EXPECT_TRUE(InstalledProducts::list(store).empty());

    ASSERT_TRUE(InstalledProducts::add({"B2", "Mecadra 2012"}, store));
    ASSERT_TRUE(InstalledProducts::add({"A1", "Other"}, store));
    ASSERT_TRUE(InstalledProducts::add({"B2", "Mecadra 2013"}, store));
    // A product without a name is listed with an empty one, for the caller to skip.
    ASSERT_TRUE(store.createKey(RegistryRoot::LocalMachine, RegistryView::Native,
                                QString::fromUtf16(InstalledProducts::ProductsKey) + "\\C3"));

    const auto products = InstalledProducts::list(store);
    ASSERT_EQ(products.size(), 3u);
    for (const auto &product : products) {
        if (product.code == "B2") {
            EXPECT_EQ(product.name, "Mecadra 2013");
        }
        if (product.code == "C3") {
            EXPECT_TRUE(product.name.isEmpty());
        }
    }

    EXPECT_TRUE(InstalledProducts::remove("B2", store));
    EXPECT_EQ(InstalledProducts::list(store).size(), 2u);
    EXPECT_TRUE(InstalledProducts::remove("missing", store));
    EXPECT_FALSE(InstalledProducts::add({"x\\y", "bad code"}, store));
    EXPECT_FALSE(InstalledProducts::add({"", "no code"}, store));
}
