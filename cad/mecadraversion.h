#pragma once

#include <QString>

#include <optional>

// How Mecadra's versions are named in its class registration and set-up keys.
namespace MecadraVersion {

inline const QString ProgId = QStringLiteral("Cadrix.Application");
// The executable an installation folder holds.
inline const QString ExecutableName = QStringLiteral("CADRIX.EXE");

// "Cadrix.Application.21" for 2013 (the year less 1992).
inline QString versionedProgId(int versionYear)
{
    return QStringLiteral("%1.%2").arg(ProgId).arg(versionYear - 1992);
}

// The year of a versioned ProgID (number after its last "." plus 1992);
// nothing for a ProgID without a ".".
inline std::optional<int> yearOfProgId(const QString &progId)
{
    const qsizetype dot = progId.lastIndexOf(QLatin1Char('.'));
    if (dot < 0)
        return std::nullopt;
    return progId.mid(dot + 1).toInt() + 1992;
}

// "SOFTWARE\Mecadra\Mecadra 2013\Setup" under HKEY_LOCAL_MACHINE.
inline QString setupKey(int versionYear) { return QStringLiteral("SOFTWARE\\Mecadra\\Mecadra %1\\Setup").arg(versionYear); }

inline const QString FolderValue = QStringLiteral("Mecadra Folder");
inline const QString LocationValue = QStringLiteral("Mecadra Location");
inline const QString OfficeInstalledValue = QStringLiteral("Mecadra Office Installed");

} // namespace MecadraVersion
