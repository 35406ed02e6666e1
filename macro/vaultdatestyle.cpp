#include "macro/vaultdatestyle.h"

#include "common/settingslight.h"

std::int32_t GetVaultDateStyle(const QString &vaultName)
{
    return static_cast<std::int32_t>(SettingsLight().vaultDateStyle(vaultName));
}
