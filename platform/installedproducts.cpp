#include "platform/installedproducts.h"

#include "platform/registry.h"

namespace InstalledProducts {

namespace {
const QString productsKey = QString::fromUtf16(ProductsKey);
}

std::vector<Product> list(RegistryStore &store)
{
    std::vector<Product> products;
    Registry root(store);
    if (!root.open(RegistryRoot::LocalMachine, productsKey))
        return products;
    for (const QString &code : root.subKeys()) {
        const Registry product = root.openSubKey(code);
        products.push_back({code, product.readString(QStringLiteral("ProductName")).value_or(QString())});
    }
    return products;
}

bool add(const Product &product, RegistryStore &store)
{
    if (product.code.isEmpty() || product.code.contains(QLatin1Char('\\')))
        return false;
    Registry key(store);
    return key.create(RegistryRoot::LocalMachine, productsKey + QLatin1Char('\\') + product.code)
        && key.writeString(QStringLiteral("ProductName"), product.name);
}

bool remove(const QString &code, RegistryStore &store)
{
    if (code.isEmpty() || code.contains(QLatin1Char('\\')))
        return false;
    Registry products(store);
    if (!products.open(RegistryRoot::LocalMachine, productsKey, RegistryReadWrite))
        return true;
    products.deleteSubKeyTree(code);
    return !products.subKeys().contains(code, Qt::CaseInsensitive);
}

} // namespace InstalledProducts
