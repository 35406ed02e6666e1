#include "macro/vaultdatestyle.h"

#include "platform/registry.h"

std::int32_t GetVaultDateStyle(const QString &vaultName)
{
    Registry key;
    if (!key.open(RegistryRoot::LocalMachine,
                  QStringLiteral("Software\\Mecadra\\Applications\\Vaultek Enterprise\\Vaults\\") + vaultName))
        return 0;
    return static_cast<std::int32_t>(key.readDword(QStringLiteral("DateFmt")).value_or(0));
}
