#pragma once

#include "host/hresult.h"

#include <QString>

class RegistryStore;

// Identities of the add-in's component module.
namespace McTaskAddInIds {
inline const QString ClassId = QStringLiteral("{D22F1795-5A92-4B1E-9FD9-3A9D93D11FEB}");
inline const QString ClassDescription = QStringLiteral("McTaskAddIn Class");
inline const QString ProgId = QStringLiteral("McTaskAddIn.McTaskAddIn.1");
inline const QString VersionIndependentProgId = QStringLiteral("McTaskAddIn.McTaskAddIn");
inline const QString AppId = QStringLiteral("{F34A6435-746A-4BF8-83DC-D5A5301EFAC0}");
inline const QString AppName = QStringLiteral("McTaskAddIn");
inline const QString ModuleName = QStringLiteral("McTaskAddIn.DLL");
inline const QString TypeLibId = QStringLiteral("{D229FBD6-E3E3-4316-BAA4-2E07DCE997EF}");
} // namespace McTaskAddInIds

// Writes the class, program id and application id entries under the
// classes root; the class's own key is replaced as a whole. The first
// failure is returned.
HRESULT registerAddInModule(RegistryStore &store, const QString &modulePath);

// Removes what registration wrote; the shared "CLSID" and "AppID" keys stay.
HRESULT unregisterAddInModule(RegistryStore &store);
