#pragma once

#include <QString>
#include <cstdint>

// The date style of a vault: its "DateFmt" machine setting, 0 when absent.
std::int32_t GetVaultDateStyle(const QString &vaultName);
