#pragma once

#include "platform/registrystore.h"

#include <QString>

#include <vector>

// The machine's installed products, as an installer records them: one key per
// product code under HKLM "SOFTWARE\Classes\Installer\Products", holding its
// "ProductName". Installers add themselves here; the Script page lists them.
namespace InstalledProducts {

struct Product {
    QString code;
    QString name;
};

// The key under HKEY_LOCAL_MACHINE that holds one sub-key per product.
inline constexpr auto ProductsKey = u"SOFTWARE\\Classes\\Installer\\Products";

// Products in index order (the order of their codes); a product without a
// name is still listed, with an empty name.
std::vector<Product> list(RegistryStore &store = RegistryStore::instance());
// Records a product under its code, replacing an earlier record of that code.
bool add(const Product &product, RegistryStore &store = RegistryStore::instance());
// Removes a product's record; true when none is left.
bool remove(const QString &code, RegistryStore &store = RegistryStore::instance());

} // namespace InstalledProducts
