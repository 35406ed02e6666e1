#pragma once

#include "host/hresult.h"

#include <QString>

// Name and description of the host's own error codes (E_DOX_*), and of the
// general codes the vault returns. False for a code it does not know.
bool vaultErrorText(HRESULT code, QString &name, QString &description);
